"""Checks the schemas of the JSON documents: themselves, the documents that the pages show, and that wrong documents are
refused. What the programs write is checked in documents_test.py.
"""
import copy
import json
import re
import unittest

import pages
import schemas
from jsonschema import Draft202012Validator

EXAMPLES = [(name, example) for name, schema in schemas.KINDS.items() for example in schema["examples"]]
# In a file that people may write, what is left out stays as it is. What is printed has all fields.
PRINTED = [(name, example) for name, example in EXAMPLES if "command" in example]


def example(name):
    return copy.deepcopy(schemas.KINDS[name + ".schema.json"]["examples"][0])


def shown_documents():
    """The documents in the blocks of all pages."""
    for page in pages.all_pages():
        for block in page.blocks:
            if block.language == "json":
                document = json.loads(block.text)
                if "command" in document:
                    yield block.where, document


def places(value, path=()):
    """Every place in a document, the document itself included."""
    yield path
    entries = value.items() if isinstance(value, dict) else enumerate(value) if isinstance(value, list) else ()
    for key, one in entries:
        yield from places(one, (*path, key))


def at(document, path):
    for key in path:
        document = document[key]
    return document


class Schemas(unittest.TestCase):
    def test_are_schemas(self):
        self.assertGreater(len(schemas.KINDS), 5)
        for name, schema in schemas.ALL.items():
            with self.subTest(name):
                Draft202012Validator.check_schema(schema)
                self.assertEqual("urn:zebdiag:json:" + name.removesuffix(".schema.json"), schema["$id"])
                self.assertTrue(schema["title"])

    def test_every_kind_has_one_schema_and_every_schema_an_example(self):
        commands = [(schemas.reports_error(schema), command)
                    for schema in schemas.KINDS.values() for command in schemas.commands_of(schema)]
        self.assertEqual(len(commands), len(set(commands)))
        for name, schema in schemas.KINDS.items():
            self.assertTrue(schema["examples"], name)

    def test_a_document_is_named_by_its_command_and_by_the_error_that_it_reports(self):
        for name, document in EXAMPLES:
            self.assertEqual(name, schemas.kind_of(document)[0])
        self.assertIsNone(schemas.kind_of({"command": "nonsense"}))

    def test_commands_that_report_errors_are_all_commands(self):
        written = {command for schema in schemas.KINDS.values() if not schemas.reports_error(schema)
                   for command in schemas.commands_of(schema) if command}
        self.assertEqual(sorted(written), schemas.ALL["error.schema.json"]["properties"]["command"]["enum"])

    def test_every_field_is_described(self):
        described = set(re.findall(r"\w+", " ".join(
            pages.Page(pages.ROOT / "docs/json.md").code)))
        for name, document in PRINTED:
            fields = {path[-1] for path in places(document) if path and isinstance(path[-1], str)}
            self.assertEqual(set(), fields - described, name)


class GoodDocuments(unittest.TestCase):
    def test_examples(self):
        for name, document in EXAMPLES:
            self.assertEqual([], schemas.errors_in(document, name), name)

    def test_those_that_the_pages_show(self):
        shown = list(shown_documents())
        self.assertGreaterEqual(len(shown), 3)
        for where, document in shown:
            self.assertEqual([], schemas.errors_in(document, schemas.kind_of(document)[0]), where)


# What is wrong, the document, how it is spoilt, the place that is named.
WRONG = (
    ("another version", "list", lambda d: d.update(version=99), "$.version"),
    ("version as text", "list", lambda d: d.update(version="1"), "$.version"),
    ("another command", "list", lambda d: d.update(command="run"), "$.command"),
    ("empty name of the computer", "list", lambda d: d.update(computer=""), "$.computer"),
    ("no name of the namespace", "list", lambda d: d.update(namespace=None), "$.namespace"),
    ("process 0", "list", lambda d: d["provider"].update(processIds=[0]), "$.provider.processIds[0]"),
    ("one process twice", "list", lambda d: d["provider"].update(processIds=[7, 7]), "$.provider.processIds"),
    ("adapter without a name", "list", lambda d: d["adapters"][0].update(name=""), "$.adapters[0].name"),
    ("empty description of an adapter", "list", lambda d: d["adapters"][0].update(description=""),
     "$.adapters[0].description"),
    ("key of a test without an adapter", "list", lambda d: d["adapters"][0]["tests"][0].update(key="9@"),
     "$.adapters[0].tests[0].key"),
    ("number of a test as text", "list", lambda d: d["adapters"][0]["tests"][0].update(number="9"),
     "$.adapters[0].tests[0].number"),
    ("switch as a number", "list", lambda d: d["adapters"][0]["tests"][0].update(running=1),
     "$.adapters[0].tests[0].running"),
    ("exit code of another verdict", "run", lambda d: d.update(exitCode=0), "$.exitCode"),
    ("verdict of another exit code", "run", lambda d: d.update(verdict="passed"), "$.verdict"),
    ("verdict that there is not", "run", lambda d: d.update(verdict="usage", exitCode=7), "$.verdict"),
    ("no run", "run", lambda d: d.update(runs=[]), "$.runs"),
    ("outcome in words", "run", lambda d: d["runs"][0].update(outcome="Failed"), "$.runs[0].outcome"),
    ("passed run with a failed result", "run", lambda d: d["runs"][0].update(outcome="passed"),
     "$.runs[0].result.state"),
    ("failed run without a result", "run", lambda d: d["runs"][0].update(result=None), "$.runs[0].result"),
    ("busy test with a result", "run", lambda d: d["runs"][1].update(result=d["runs"][0]["result"]),
     "$.runs[1].result"),
    ("busy test without a message", "run", lambda d: d["runs"][1].update(message=None), "$.runs[1].message"),
    ("empty message", "run", lambda d: d["runs"][0].update(message=""), "$.runs[0].message"),
    ("part of a second", "run", lambda d: d["runs"][0].update(seconds=0.5), "$.runs[0].seconds"),
    ("time with a blank", "run", lambda d: d["runs"][0]["result"].update(started="2024-05-01 13:45:10"),
     "$.runs[0].result.started"),
    ("time with a zone", "run", lambda d: d["runs"][0]["result"].update(ended="2024-05-01T13:45:10Z"),
     "$.runs[0].result.ended"),
    ("month 13", "run", lambda d: d["runs"][0]["result"].update(written="2024-13-01T13:45:10"),
     "$.runs[0].result.written"),
    ("finding in place of a line", "run", lambda d: d["runs"][0]["result"].update(lines=["No link."]),
     "$.runs[0].result.lines[0]"),
    ("negative percentage", "results", lambda d: d["results"][0].update(percentComplete=-1),
     "$.results[0].percentComplete"),
    ("state that there is not", "results", lambda d: d["results"][0].update(state="running"), "$.results[0].state"),
    ("report of no time", "report", lambda d: d.update(made=None), "$.made"),
    ("report on nothing", "report", lambda d: d.update(adapters=[]), "$.adapters"),
    ("negative counter", "report", lambda d: d["adapters"][0]["tests"][0]["counters"][0].update(value=-1),
     "$.adapters[0].tests[0].counters[0].value"),
    ("coverage of more than a byte", "settings", lambda d: d["settings"][0].update(coverage=256),
     "$.settings[0].coverage"),
    ("switch as text", "settings", lambda d: d["settings"][0].update(quick="on"), "$.settings[0].quick"),
    ("profile without a name", "profiles", lambda d: d["profiles"][0].update(name=""), "$.profiles[0].name"),
    ("coverage of nothing in a file", "profiles-file", lambda d: d["profiles"]["short"].update(coverage=0),
     "$.profiles.short.coverage"),
    ("unknown setting in a file", "profiles-file", lambda d: d["profiles"]["short"].update(size=1), "$.profiles.short"),
    ("effect without an outcome", "stop-clear", lambda d: d["tests"][0].update(outcome=None), "$.tests[0].outcome"),
    ("doctor's verdict of a run", "doctor", lambda d: d.update(verdict="busy", exitCode=5), "$.verdict"),
    ("no point", "doctor", lambda d: d.update(points=[]), "$.points"),
    ("point that there is not", "doctor", lambda d: d["points"][0].update(point="printer"), "$.points[0].point"),
    ("next step of a good point", "doctor", lambda d: d["points"][0].update(nextStep="None."),
     "$.points[0].nextStep"),
    ("error that passed", "error", lambda d: d.update(verdict="passed", exitCode=0), "$.verdict"),
    ("error without a cause", "error", lambda d: d["error"].update(cause=""), "$.error.cause"),
    ("status as a number", "error", lambda d: d["error"].update(status=2147749902), "$.error.status"),
    ("status in small letters", "error", lambda d: d["error"].update(status="0x8004100e"), "$.error.status"),
)


class WrongDocuments(unittest.TestCase):
    def test_are_refused_for_what_is_wrong(self):
        for wrong, kind, spoil, place in WRONG:
            with self.subTest(wrong):
                document = example(kind)
                spoil(document)
                self.assertIn(place, [found for found, _ in schemas.errors_in(document, kind + ".schema.json")])

    def spoilt(self, spoil, least):
        """Every printed example, spoilt in each place that `spoil` changes; there have to be so many."""
        count = 0
        for name, document in PRINTED:
            for path in places(document):
                one = copy.deepcopy(document)
                if spoil(one, path):
                    count += 1
                    yield (name, path), [text for _, text in schemas.errors_in(one, name)]
        self.assertGreater(count, least)

    def test_no_field_may_be_left_out(self):
        def leave_out(document, path):
            if not path or not isinstance(path[-1], str):
                return False
            del at(document, path[:-1])[path[-1]]
            return True
        for where, errors in self.spoilt(leave_out, 100):
            self.assertIn(f"'{where[1][-1]}' is a required property", errors, where)

    def test_no_field_may_be_added(self):
        def add(document, path):
            if not isinstance(at(document, path), dict):
                return False
            at(document, path)["more"] = 1
            return True
        for where, errors in self.spoilt(add, 20):
            self.assertTrue(any("'more' was unexpected" in error for error in errors), where)

    def test_no_value_may_be_of_another_type(self):
        def replace(document, path):
            if not path:
                return False
            at(document, path[:-1])[path[-1]] = [{"nothing": "like this"}]
            return True
        for where, errors in self.spoilt(replace, 100):
            self.assertTrue(errors, where)


if __name__ == "__main__":
    unittest.main(verbosity=1)
