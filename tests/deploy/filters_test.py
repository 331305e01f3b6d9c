#!/usr/bin/env python3
"""The filters of the collection: the text of commands, and the rows and lines of the report."""
import csv
import io
import json
import pathlib
import re
import sys
import unittest

from ansible.errors import AnsibleFilterError

COLLECTION = pathlib.Path(__file__).resolve().parents[2] / "deploy/ansible"
sys.path.insert(0, str(COLLECTION / "plugins/filter"))
import report  # noqa: E402
import windows  # noqa: E402

PROGRAM = r"%ProgramFiles%\Veltrane\ZEB\zebdiag.exe"


def run(adapter="Ethernet 2", test="Link", outcome="passed", message=None, findings=()):
    return {"test": reference(adapter, test), "outcome": outcome, "seconds": 1, "message": message,
            "result": {"findings": list(findings)}}


def reference(adapter="Ethernet 2", test="Link"):
    return {"key": "1@A", "number": 1, "caption": test, "adapter": {"key": "A", "name": adapter}}


def answer(*documents, code=0):
    return {"rc": code, "stdout": "\r\n".join(json.dumps(document) for document in documents), "stderr": ""}


def document(*runs, not_run=(), verdict="passed"):
    return {"version": 2, "command": "run", "verdict": verdict, "runs": list(runs), "notRun": list(not_run)}


class Commands(unittest.TestCase):
    def test_a_command_is_one_literal_for_powershell(self):
        self.assertEqual(
            f"""cmd /c '"{PROGRAM}" run --adapter "Ethernet 2" --json'; exit $LASTEXITCODE""",
            windows.windows_command([[PROGRAM, "run", "--adapter", "Ethernet 2", "--json"]]))

    def test_a_program_with_blanks_is_quoted(self):
        self.assertEqual("""cmd /c '"C:\\Program Files\\a.exe" b'; exit $LASTEXITCODE""",
                         windows.windows_command([[r"C:\Program Files\a.exe", "b"]]))

    def test_commands_follow_one_another(self):
        self.assertEqual("cmd /c 'a 1 & b 2'; exit $LASTEXITCODE", windows.windows_command([["a", 1], ["b", 2]]))

    def test_what_ends_a_literal_is_doubled(self):
        for quote in "'\u2018\u2019\u201a\u201b":
            self.assertEqual(f"cmd /c 'a \"x{quote}{quote} y\"'; exit $LASTEXITCODE",
                             windows.windows_command([["a", f"x{quote} y"]]))

    def test_what_the_command_processor_reads_is_quoted(self):
        for sign in "&|<>()^!;,":
            self.assertEqual(f"cmd /c 'a \"x{sign}y\"'; exit $LASTEXITCODE",
                             windows.windows_command([["a", f"x{sign}y"]]))

    def test_an_empty_argument_stays(self):
        self.assertEqual("cmd /c 'start \"\" a'; exit $LASTEXITCODE", windows.windows_command([["start", "", "a"]]))

    def test_what_cannot_be_quoted_is_refused(self):
        for argument in ('a"b', "a\nb", "a\rb", "a\0b", "a b\\", "%PATH%", "50 %"):
            with self.subTest(argument), self.assertRaises(AnsibleFilterError):
                windows.windows_command([["a", argument]])
        with self.assertRaises(AnsibleFilterError):
            windows.windows_command([["a", 'b"c']], expand=True)

    def test_variables_of_the_host_are_for_those_who_ask(self):
        self.assertEqual(r"""cmd /c 'a "%TEMP%\zeb.msi"'; exit $LASTEXITCODE""",
                         windows.windows_command([["a", r"%TEMP%\zeb.msi"]], expand=True))

    def test_there_is_a_command_for_each_test_and_adapter(self):
        end = ["--locale", "de-DE", "--timeout", 30, "--json"]
        cases = (
            ([], [], [["--all"]]),
            (["link"], [], [["--test", "link"]]),
            ([], ["A"], [["--all", "--adapter", "A"]]),
            (["1", "2"], ["A", "B"], [["--test", "1", "--adapter", "A"], ["--test", "1", "--adapter", "B"],
                                      ["--test", "2", "--adapter", "A"], ["--test", "2", "--adapter", "B"]]),
            ("link, gateway", "A", [["--test", "link", "--adapter", "A"], ["--test", "gateway", "--adapter", "A"]]),
        )
        for tests, adapters, expected in cases:
            with self.subTest(tests=tests, adapters=adapters):
                self.assertEqual([["z", "run", *words, *end] for words in expected],
                                 windows.run_commands("z", tests, adapters, "de-DE", 30))


class Rows(unittest.TestCase):
    def one(self, given):
        found = report.rows(given)
        self.assertEqual(1, len(found), found)
        return tuple(found[0].values())

    def test_a_run_is_a_row(self):
        given = answer(document(run(outcome="failed", message="It was cut.", findings=["No link.", "Plug it in."]),
                                run("Ethernet", "Gateway"), not_run=[reference(test="Names")]))
        self.assertEqual([("Ethernet 2", "Link", "failed", "It was cut. No link. Plug it in."),
                          ("Ethernet", "Gateway", "passed", ""),
                          ("Ethernet 2", "Names", "not_run", "The series was stopped before.")],
                         [tuple(row.values()) for row in report.rows(given)])

    def test_documents_follow_one_another(self):
        given = answer(document(run()), document(run(test="Gateway", outcome="stopped")))
        self.assertEqual(["Link", "Gateway"], [row["test"] for row in report.rows(given)])

    def test_a_run_without_result_is_a_row(self):
        without = {**run(outcome="could_not_run", message="Busy."), "result": None}
        self.assertEqual(("Ethernet 2", "Link", "could_not_run", "Busy."), self.one(answer(document(without))))

    def test_an_error_is_the_row_of_the_host(self):
        error = {"version": 2, "command": "run", "verdict": "not_reachable", "exitCode": 6,
                 "error": {"cause": "No provider.", "nextStep": "Install it.", "status": None, "providerSays": None}}
        self.assertEqual(("", "", "not_reachable", "No provider. Install it."), self.one(answer(error)))

    def test_no_test_is_a_row(self):
        self.assertEqual(("", "", "passed", "No test was run."), self.one(answer(document())))

    def test_a_host_without_answer_has_a_row(self):
        cases = (
            (None, "not_tried"),
            ({"unreachable": True, "msg": "refused"}, "unreachable"),
            ({"failed": True, "msg": "failed to execute in the expected time frame (5)"}, "timed_out"),
            ({"failed": True, "msg": "Timed out after 5 s", "timedout": {"period": 5}}, "timed_out"),
            ({"failed": True, "msg": "something else"}, "no_document"),
        )
        for given, verdict in cases:
            with self.subTest(verdict):
                self.assertEqual(verdict, self.one(given)[2])

    def test_what_is_no_document_of_ours_is_a_row(self):
        for text in ("", "'zebdiag' is not recognized", "[]", "1", '{"version": 1}', '{"runs": 3, "notRun": []}',
                     '{"runs": [{}], "notRun": []}', '{"error": "x", "verdict": "passed"}', '{"runs": [',
                     "[" * 100000, json.dumps(document(run())) + " and more"):
            with self.subTest(text[:40]):
                row = self.one({"rc": 9, "stdout": text, "stderr": "it said so"})
                self.assertEqual(("", "", "no_document"), row[:3])
                self.assertIn("(exit code 9). it said so", row[3])

    def test_an_outcome_that_is_not_known_is_no_verdict(self):
        self.assertEqual("no_document", self.one(answer(document(run(outcome="<b>"))))[2])
        self.assertEqual("no_document", self.one(answer(document(run(outcome=["passed"]))))[2])

    def test_a_text_is_one_line_of_limited_length(self):
        row = self.one(answer(document(run("A\r\nB\u2028C\x1b[0m", findings=["x" * 1000]))))
        self.assertEqual("A B C [0m", row[0])
        self.assertEqual("x" * 499 + "\u2026", row[3])

    def test_the_gravest_verdict_is_the_host_s(self):
        hosts = {"a": {"zeb_answer": answer(document(run(), run(outcome="failed"), run(outcome="stopped")))},
                 "b": {"zeb_answer": answer(document(run(), run()))}, "c": {}}
        reports = report.host_reports(hosts, hosts)
        self.assertEqual([("a", "failed", 1), ("b", "passed", 2), ("c", "not_tried", 0)],
                         [(one["host"], one["verdict"], one["passed"]) for one in reports])
        self.assertEqual(["c", "a", "b"], [one["host"] for one in report.by_gravity(reports)])
        self.assertEqual("3 hosts: 1 not tried, 1 failed, 1 passed.", report.counts_text(reports))
        self.assertEqual("no answer of zebdiag", report.words("no_document"))
        self.assertEqual("1 host: 1 failed.", report.counts_text(reports[:1]))


class Template(unittest.TestCase):
    def test_every_value_of_the_page_is_escaped(self):
        page = (COLLECTION / "roles/run/templates/report.html.j2").read_text(encoding="utf-8")
        values = re.findall(r"{{(.*?)}}", page, flags=re.DOTALL)
        self.assertLess(10, len(values))
        self.assertEqual([], [value for value in values if not value.endswith(" | e ")])


class Lines(unittest.TestCase):
    def test_fields_are_quoted(self):
        fields = ["plain", "a,b", 'say "x"', "", "umlaut \u00e4"]
        line = report.csv_line(fields)
        self.assertEqual('"plain","a,b","say ""x""","","umlaut \u00e4"', line)
        self.assertEqual([fields], list(csv.reader(io.StringIO(line))))

    def test_a_field_is_never_a_formula(self):
        for sign in ("=", "+", "-", "@", " =", "\t=", "\r=", "\n=", "\0=", "\uff1d"):
            with self.subTest(sign):
                field = next(csv.reader(io.StringIO(report.csv_line([sign + "1+1"]))))[0]
                self.assertEqual("'" + sign.strip(" \t\r\n\0") + "1+1", field)

    def test_a_line_stays_one_line(self):
        self.assertEqual(1, len(report.csv_line(["a\nb\r\nc\x0bd\u2028e\x85f"]).splitlines()))


if __name__ == "__main__":
    unittest.main()
