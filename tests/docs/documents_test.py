"""Checks every JSON document that the tests before this one have had from the real programs.
usage: documents_test.py FOLDER [unittest's arguments]

tests/system/support/Documents.cpp keeps them there. There has to be at least one of every kind: a kind without a
document is one that no test of the programs writes.
"""
import json
import pathlib
import sys
import unittest

import schemas

FOLDER = pathlib.Path(sys.argv[1])


class Documents(unittest.TestCase):
    def test_are_as_the_schemas_say(self):
        seen = set()
        for path in sorted(FOLDER.rglob("*.json")):
            name = str(path.relative_to(FOLDER))
            with self.subTest(name):
                document = json.loads(path.read_bytes().decode("utf-8"))
                kind = schemas.kind_of(document)
                self.assertIsNotNone(kind, document)
                seen.add(kind)
                self.assertEqual([], schemas.errors_in(document, kind[0]), document)
        self.assertEqual(set(), schemas.kinds() - seen, "kinds without a document")
        print(f"{len(list(FOLDER.rglob('*.json')))} documents of {len(seen)} kinds")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]], verbosity=1)
