# The only commands to remember. Everything is built in build/ and runs in a Wine prefix there.
.PHONY: demo test bench build check format clean

export CCACHE_BASEDIR := $(CURDIR)
export CCACHE_NOHASHDIR := 1
export CCACHE_SLOPPINESS := pch_defines,time_macros

build:
	@scripts/install-packages
	@scripts/build

test: build
	@scripts/test

demo: build
	@scripts/demo

bench: build
	@scripts/bench

check:
	@scripts/install-packages
	@scripts/check

format:
	@scripts/install-packages
	@git ls-files -z '*.h' '*.cpp' | xargs -0 clang-format -i

clean:
	@scripts/clean
