"""Takes the time of making out of a type library, so that the same sources make the same bytes.
usage: fix-time.py FILE.tlb

The IDL compiler writes it twice: in the words "Created by WIDL version 7.0 at DATE", and behind them as a number (type
VT_UI4, 0x13), both as values of the library's custom data.
"""
import re
import sys

TIME = re.compile(rb"(Created by WIDL version [0-9.]+ at ).{24}(\nW*\x13\x00).{4}", re.DOTALL)

path = sys.argv[1]
with open(path, "rb") as file:
    data = file.read()
fixed, count = TIME.subn(lambda found: found[1] + b"Thu Jan  1 00:00:00 1970" + found[2] + bytes(4), data)
if count != 1 or len(fixed) != len(data):
    sys.exit(f"{path}: the time of making is not where it was")
with open(path, "wb") as file:
    file.write(fixed)
