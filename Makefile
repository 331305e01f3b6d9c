# The only commands to remember. Everything is built in build/ and runs in Wine prefixes there. STEP is what a
# script writes before it says what it does.
.PHONY: demo test test-deploy package bench soak build check machines format clean

export CCACHE_BASEDIR := $(CURDIR)
export CCACHE_NOHASHDIR := 1
export CCACHE_SLOPPINESS := pch_defines,time_macros

ROUNDS ?= 10

# SCENARIO=healthy, cable or flaky shows what the tests find on adapters that the scripted agent plays.
demo:
	@scripts/demo --check '$(SCENARIO)'
	@STEP='[1/5] ' scripts/install-packages
	@STEP='[2/5] ' scripts/build demo_parts "the provider and what the demonstration needs"
	@STEP='[3/5] ' scripts/wine-prefix build/prefix
	@STEP='[4/5] ' scripts/register
	@STEP='[5/5] ' scripts/demo '$(SCENARIO)'

test:
	@STEP='[1/4] ' scripts/install-packages
	@STEP='[2/4] ' scripts/build all "everything and its tests"
	@STEP='[3/4] ' scripts/wine-prefix build/prefix
	@STEP='[4/4] ' scripts/test

# The tests of deploy/ need large programs, so "make test" does without them.
test-deploy:
	@STEP='[1/6] ' scripts/install-packages
	@STEP='[2/6] ' scripts/install-deploy-packages
	@STEP='[3/6] ' scripts/build package_parts "what ships, with line numbers" shipped
	@STEP='[4/6] ' scripts/build demo_parts "the agents and the service's stand-in"
	@STEP='[5/6] ' scripts/package
	@STEP='[6/6] ' scripts/test-deploy

# SIGN='-pkcs12 key.p12 -pass secret' signs everything with osslsigncode. SOURCE_DATE_EPOCH is the time that all bears.
package:
	@STEP='[1/3] ' scripts/install-packages
	@STEP='[2/3] ' scripts/build package_parts "what ships, with line numbers" shipped
	@STEP='[3/3] ' scripts/package

bench:
	@STEP='[1/4] ' scripts/install-packages
	@STEP='[2/4] ' scripts/build bench_parts "the provider and the benchmark"
	@STEP='[3/4] ' scripts/wine-prefix build/prefix
	@STEP='[4/4] ' scripts/bench

soak:
	@scripts/install-packages
	@scripts/build all "everything and its tests"
	@scripts/soak --rounds "$(ROUNDS)"

build:
	@scripts/install-packages
	@scripts/build all "everything and its tests"

check:
	@scripts/install-packages
	@scripts/check

machines:
	@scripts/check-machines

format:
	@scripts/install-packages
	@git ls-files -z '*.h' '*.cpp' | xargs -0 clang-format -i

clean:
	@scripts/clean
