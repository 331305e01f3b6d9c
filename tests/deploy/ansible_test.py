#!/usr/bin/env python3
"""The collection in the hands of Ansible: Wine prefixes as hosts, besides one that never answers and one that refuses
every connection.

usage: ansible_test.py PACKAGE VERSION

The real shell of a host is not there: what is between Ansible and a host is played by connection_plugins/wine_host.py.
"""
import csv
import html.parser
import json
import os
import pathlib
import shutil
import socket
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/system/package"))
from machine import Machine  # noqa: E402

PACKAGE, VERSION = sys.argv[1:3]
COLLECTION = ROOT / "deploy/ansible"
WORK = ROOT / "build/deploy-test"
REPORT = WORK / "report"
PROGRAM = "Program Files/Veltrane/ZEB/zebdiag.exe"
SCRIPT = r"HKLM\SOFTWARE\Veltrane\Halvern\ZEB\VorlTest"
# The host that hangs ends it early once the others have answered; if it held them up, it would be over before they did.
HUNG_TIMEOUT = 480
NASTY = "=1+1 <b>\"LAN\"</b>, {{ 7 * 7 }} &amp; 'x'"
ADAPTERS = {
    "office": [{"Key": "OFFICE-LAN", "Tests": [{"TestID": 1}, {"TestID": 2}, {"TestID": 9}]}],
    "floor": [{"Key": "=1+1 <B>LAN", "Tests": [{"TestID": 1, "Outcome": "0x80040311"}, {"TestID": 2}]},
              {"Key": "FLOOR LAN 2", "Tests": [{"TestID": 1}]}],
}
WIRED = [("office", "OFFICE-LAN", "Link", "passed"),
         ("office", "OFFICE-LAN", "Negotiated speed and duplex", "passed"),
         ("floor", "'=1+1 <B>LAN", "Link", "failed"),
         ("floor", "'=1+1 <B>LAN", "Negotiated speed and duplex", "passed"),
         ("floor", "FLOOR LAN 2", "Link", "passed")]


def environment():
    variables = {name: value for name, value in os.environ.items() if not name.startswith("ANSIBLE_")}
    return {**variables, "HOME": str(WORK / "home"), "LC_ALL": "C.UTF-8", "PYTHONDONTWRITEBYTECODE": "1",
            "ANSIBLE_COLLECTIONS_PATH": str(WORK / "collections"), "ANSIBLE_NOCOLOR": "1",
            "ANSIBLE_SSH_ARGS": "-F none",
            "ANSIBLE_CONNECTION_PLUGINS": str(ROOT / "tests/deploy/connection_plugins")}


def ansible(*command, code=0, folder=WORK):
    done = subprocess.run([str(word) for word in command], cwd=folder, env=environment(), stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", errors="replace",
                          check=False)
    if done.returncode != code:
        raise AssertionError(f"{command[0]} has ended with {done.returncode} and not with {code}:\n{done.stdout}")
    return done.stdout


def play(name, hosts, *options, code=0, **variables):
    """Runs a playbook of the collection on hosts, {name: variables}. Returns its recap, {host: {word: number}}."""
    inventory = WORK / "inventory.json"
    usual = {"ansible_connection": "wine_host", "ansible_shell_type": "powershell"}
    inventory.write_text(json.dumps({"windows": {
        "hosts": {host: {**usual, **more} for host, more in hosts.items()}}}), encoding="utf-8")
    output = ansible("ansible-playbook", "-i", inventory, *options, "-e",
                     json.dumps({"zeb_report_folder": str(REPORT), **variables}), f"zeb.diagnostics.{name}", code=code)
    with open(WORK / "plays.log", "a", encoding="utf-8") as log:
        log.write(output)
    recap = output[output.index("PLAY RECAP"):].splitlines()[1:]
    return {host.strip(): {word: int(number) for word, number in (pair.split("=") for pair in numbers.split())}
            for host, numbers in (line.split(" : ") for line in recap if " : " in line)}


def report_rows():
    with open(REPORT / "report.csv", encoding="utf-8-sig", newline="") as file:
        rows = list(csv.reader(file))
    return rows[0], rows[1:]


class Page(html.parser.HTMLParser):
    """The elements of a page, the addresses that it names, and the texts of its table cells."""

    def __init__(self):
        super().__init__()
        self.elements, self.addresses, self.cells, self.rows = [], [], None, []
        self.feed((REPORT / "report.html").read_text(encoding="utf-8"))
        self.close()

    def handle_starttag(self, tag, attrs):
        self.elements.append(tag)
        self.addresses += [value for name, value in attrs if name in ("href", "src")]
        if tag == "tr":
            self.rows.append([])
        self.cells = self.rows[-1] if tag in ("td", "th") else self.cells
        if tag in ("td", "th"):
            self.cells.append("")

    def handle_endtag(self, tag):
        if tag in ("td", "th"):
            self.cells = None

    def handle_data(self, data):
        if self.cells:
            self.cells[-1] += data


class Collection(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        shutil.rmtree(WORK, ignore_errors=True)
        (WORK / "home").mkdir(parents=True)
        ansible("ansible-galaxy", "collection", "build", "--output-path", WORK, COLLECTION)
        ansible("ansible-galaxy", "collection", "install", "--offline", "-p", WORK / "collections",
                *WORK.glob("zeb-diagnostics-*.tar.gz"))

    def setUp(self):
        shutil.rmtree(REPORT, ignore_errors=True)

    def recorded(self, name, document):
        text = document if isinstance(document, str) else json.dumps(document)
        path = WORK / f"{name}.answer"
        path.write_text(text, encoding="utf-8")
        return {"recorded_answer": str(path)}


class Report(Collection):
    """With recorded answers."""

    @staticmethod
    def document(outcome, text, caption="Link"):
        adapter = {"key": "A", "name": text, "description": None}
        return {"version": 2, "command": "run", "verdict": outcome, "exitCode": 0, "notRun": [], "runs": [
            {"test": {"key": "1@A", "number": 1, "caption": caption, "adapter": adapter}, "outcome": outcome,
             "seconds": 1, "message": None, "result": {"findings": [text]}}]}

    def test_the_linter_finds_nothing(self):
        ansible("ansible-lint", "--offline", "--nocolor", folder=COLLECTION)

    def test_texts_of_hosts_are_only_texts(self):
        script = "<script>alert(1)</script>"
        play("run", {"one": self.recorded("one", self.document("failed", NASTY, NASTY)),
                     "two": self.recorded("two", self.document("passed", script)),
                     "three": self.recorded("three", "{{ 7 * 7 }} is no document")})
        header, rows = report_rows()
        self.assertEqual(["host", "adapter", "test", "verdict", "detail"], header)
        self.assertEqual([["one", "'" + NASTY, "'" + NASTY, "failed", "'" + NASTY],
                          ["two", script, "Link", "passed", script],
                          ["three", "", "", "no_document",
                           "zebdiag has sent no document (exit code 0). {{ 7 * 7 }} is no document"]], rows)
        page = Page()
        self.assertNotIn("script", page.elements)
        self.assertEqual(3, page.elements.count("b"))  # the numbers of the three verdicts
        self.assertEqual({f"#computer-{number}" for number in (1, 2, 3)}, set(page.addresses))
        self.assertIn([NASTY, NASTY, "failed", NASTY], page.rows)
        self.assertIn([script, "Link", "passed", script], page.rows)
        self.assertEqual([["three", "no answer of zebdiag", "0 of 0 passed"], ["one", "failed", "0 of 1 passed"],
                          ["two", "passed", "1 of 1 passed"]],
                         page.rows[1:4])

    def test_a_failed_test_fails_the_play_for_those_who_ask(self):
        hosts = {"one": self.recorded("one", self.document("failed", "A")),
                 "two": self.recorded("two", self.document("passed", "A"))}
        recap = play("run", hosts, code=0)
        self.assertEqual((0, 0), (recap["one"]["failed"], recap["two"]["failed"]))
        shutil.rmtree(REPORT)
        recap = play("run", hosts, code=2, zeb_fail_on_failure=True)
        self.assertEqual((1, 0), (recap["one"]["failed"], recap["two"]["failed"]))
        self.assertEqual(["failed", "passed"], [row[3] for row in report_rows()[1]])

    def test_the_report_is_of_the_hosts_that_were_chosen(self):
        hosts = {name: self.recorded(name, self.document("passed", name)) for name in ("one", "two", "three")}
        play("run", hosts, "--limit", "two,three")
        self.assertEqual(["two", "three"], [row[0] for row in report_rows()[1]])
        self.assertEqual({"two.json", "three.json"}, {path.name for path in (REPORT / "answers").iterdir()})


class Hosts(Collection):
    """With Wine prefixes. One test leads to the next."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.machines = {name: cls.enterClassContext(Machine(ROOT / f"build/prefix-deploy-{name}"))
                        for name in (*ADAPTERS, "bare")}
        for name, adapters in ADAPTERS.items():
            machine = cls.machines[name]
            machine.set_up_service()
            (machine.standin / "script.json").write_text(json.dumps({"Adapters": adapters}), encoding="utf-8")
            machine.set_value(SCRIPT, "Script", r"C:\standin\script.json")
        cls.hosts = {name: {"wine_prefix": str(machine.prefix)} for name, machine in cls.machines.items()}
        # Of the port that is held here, and never listened to, every connection is refused.
        cls.port = cls.enterClassContext(socket.socket())
        cls.port.bind(("127.0.0.1", 0))
        cls.package = {"zeb_package_source": "Z:" + str(pathlib.Path(PACKAGE).resolve()).replace("/", "\\"),
                       "zeb_package_version": VERSION, "zeb_package_properties": [r"MOFCOMP=C:\standin\mofcomp.cmd"]}

    def setUp(self):
        super().setUp()
        self.wired = {name: self.hosts[name] for name in ADAPTERS}

    def installed(self):
        return {name for name, machine in self.machines.items() if (machine.drive / PROGRAM).exists()}

    def silent_hosts(self):
        self.seen = WORK / "seen"
        self.seen.unlink(missing_ok=True)
        return {"hung": {"hangs": str(self.seen), "watched": str(REPORT / "answers"), "awaited": 2,
                         "zeb_answer_timeout": HUNG_TIMEOUT, "zeb_package_timeout": 20},
                "gone": {"ansible_connection": "ssh", "ansible_host": "127.0.0.1",
                         "ansible_port": self.port.getsockname()[1]}}

    def test_1_the_package_is_installed_and_a_silent_host_stops_nobody(self):
        recap = play("install", {**self.silent_hosts(), **self.wired}, "--forks", "2", code=4, **self.package)
        self.assertEqual({"office": (1, 0, 0), "floor": (1, 0, 0), "hung": (0, 1, 0), "gone": (0, 0, 1)},
                         {host: (row["changed"], row["failed"], row["unreachable"]) for host, row in recap.items()})
        self.assertEqual({"office", "floor"}, self.installed())

    def test_2_what_is_installed_is_left_alone(self):
        recap = play("install", self.wired, **self.package)
        self.assertEqual({"office": 0, "floor": 0}, {host: row["changed"] for host, row in recap.items()})

    def test_3_a_host_that_hangs_and_one_that_is_gone_hold_nobody_up(self):
        # One of the two forks belongs to the host that hangs.
        recap = play("run", {**self.silent_hosts(), **self.hosts}, "--forks", "2")
        self.assertEqual({"hung", "gone", "office", "floor", "bare"}, set(recap))
        rows = report_rows()[1]
        self.assertEqual([("hung", "", "", "timed_out"), ("gone", "", "", "unreachable"), *WIRED,
                          ("bare", "", "", "no_document")], [tuple(row[:4]) for row in rows])
        details = {row[3]: row[4] for row in rows}
        self.assertIn(f"({HUNG_TIMEOUT})", details["timed_out"])
        self.assertIn("refused", details["unreachable"])
        self.assertNotEqual("", details["failed"])
        # What was there at the moment when the host was given up.
        self.assertEqual(["floor.json", "office.json"], self.seen.read_text(encoding="utf-8").split())

    def test_4_tests_and_adapters_are_chosen_by_name(self):
        play("run", self.wired, zeb_tests=["link"], zeb_adapters=["FLOOR LAN 2"])
        self.assertEqual([("office", "", "", "not_found"), ("floor", "FLOOR LAN 2", "Link", "passed")],
                         [tuple(row[:4]) for row in report_rows()[1]])

    def test_5_several_tests_are_one_command(self):
        play("run", {"office": self.wired["office"]}, zeb_tests=["1", "2"])
        self.assertEqual([("office", "OFFICE-LAN", "Link", "passed"),
                          ("office", "OFFICE-LAN", "Negotiated speed and duplex", "passed")],
                         [tuple(row[:4]) for row in report_rows()[1]])

    def test_6_the_package_is_removed(self):
        recap = play("remove", self.wired, **self.package)
        self.assertEqual({"office": 1, "floor": 1}, {host: row["changed"] for host, row in recap.items()})
        self.assertEqual(set(), self.installed())
        recap = play("remove", self.wired, **self.package)
        self.assertEqual({"office": 0, "floor": 0}, {host: row["changed"] for host, row in recap.items()})


if __name__ == "__main__":
    del sys.argv[1:3]
    unittest.main(failfast=True, verbosity=2)
