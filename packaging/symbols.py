"""The debug information of a program in a file of its own."""
import re
import subprocess

TOOLS = "x86_64-w64-mingw32-"
# What programs and libraries begin with. A library without any has nothing but resources.
ENTRIES = ("WinMain", "wmain", "DllGetClassObject")


def _output(tool, *arguments):
    return subprocess.run([TOOLS + tool, *arguments], check=True, capture_output=True, text=True).stdout


def split(program, symbols):
    """Moves the debug information to a file of its own, whose name the program then has."""
    symbols.parent.mkdir(parents=True, exist_ok=True)
    _output("objcopy", "--only-keep-debug", program, symbols)
    _output("strip", program)
    _output("objcopy", f"--add-gnu-debuglink={symbols}", program)


def lines_of(symbols, functions):
    """Where each of these functions that the file knows begins, as "path:line"; no number if only its name is known."""
    found = {}
    for row in _output("nm", symbols).splitlines():
        address, kind, name = row.split(maxsplit=2) if row[:1] != " " else ("", "", "")
        if name in functions and kind in "Tt":
            found[name] = _output("addr2line", "-e", symbols, address).strip()
    return found


def require_lines(symbols):
    for function, line in lines_of(symbols, ENTRIES).items():
        if not re.fullmatch(r"/zeb/.*:\d+", line):
            raise SystemExit(f"{symbols.name} has {line} for {function} and not its line: "
                             "build with the preset \"shipped\"")
