"""Lists the program's own texts, which stand in Said(...) and Marked(...) in its sources.
usage: list-texts.py OUTPUT SOURCE...

Writes one C++ string for each text, each once, as the rows of a table.
"""
import pathlib
import re
import sys

TEXT = re.compile(r'\b(?:Said|Marked)\(\s*((?:L"(?:[^"\\]|\\.)*"\s*)+)')
PIECE = re.compile(r'L"((?:[^"\\]|\\.)*)"')


def main(output, *sources):
    texts = {}
    for source in sources:
        for text in TEXT.findall(pathlib.Path(source).read_text(encoding="utf-8")):
            texts["".join(PIECE.findall(text))] = None
    pathlib.Path(output).write_text("".join(f'L"{text}",\n' for text in texts), encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
