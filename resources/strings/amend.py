#!/usr/bin/env python3
"""Makes what ships of a language's schema texts: the texts themselves, and the file that removes them.

usage: amend.py SOURCE.mfl TEXTS.mfl REMOVAL.mof

The management service's compiler takes a file without a mark for one in the system's code page, so both are written as
UTF-16 with its mark.
"""
import codecs
import pathlib
import re
import sys

REMOVAL = r"""// Removes what {name} has added. Compile with "mofcomp {own}".

#pragma namespace("\\\\.\\root\\cimv2")

// A namespace that is not there cannot be opened.
instance of __Namespace
{{
    Name = "{namespace}";
}};

#pragma namespace("\\\\.\\root\\cimv2\\{namespace}")

"""


def write(path, text):
    pathlib.Path(path).write_bytes(codecs.BOM_UTF16_LE + text.replace("\n", "\r\n").encode("utf-16-le"))


def main(source, texts, removal):
    amendment = pathlib.Path(source).read_text(encoding="utf-8")
    write(texts, amendment)
    namespace, = set(re.findall(r'^#pragma namespace\(".*\\\\(ms_[0-9a-f]+)"\)$', amendment, re.MULTILINE))
    classes = re.findall(r"^class (\w+)$", amendment, re.MULTILINE)
    write(removal, REMOVAL.format(name=pathlib.Path(texts).name, own=pathlib.Path(removal).name, namespace=namespace)
          + "".join(f'#pragma deleteclass("{name}", NOFAIL)\n' for name in reversed(classes)))


main(*sys.argv[1:])
