#!/usr/bin/env python3
"""The metrics of zebdiag in the hands of Prometheus: what the real program writes under Wine, read by promtool and by a
strict parser of OpenMetrics, and served by 200 simulated machines to a Prometheus with the rules and the dashboard of
deploy/prometheus.

usage: prometheus_test.py PACKAGE VERSION
"""
import contextlib
import http.server
import json
import pathlib
import re
import shutil
import subprocess
import sys
import threading
import time
import unittest
import urllib.parse
import urllib.request

from prometheus_client.openmetrics import parser as openmetrics

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests/system/package"), str(ROOT / "tests/docs")]
import pages  # noqa: E402
from machine import Machine  # noqa: E402

PACKAGE, VERSION = sys.argv[1:3]
PROMETHEUS = ROOT / "deploy/prometheus"
RULES = PROMETHEUS / "zeb-rules.yml"
DASHBOARD = PROMETHEUS / "zeb-dashboard.json"
WORK = ROOT / "build/prometheus-test"
ZEBDIAG = r"C:\Program Files\Veltrane\ZEB\zebdiag.exe"
PRODUCT = r"HKLM\SOFTWARE\Veltrane\Halvern\ZEB"
# Far from UTC and without summer time, so that a time that was not converted shows.
ZONE = "Asia/Kolkata"
# The sender loses 2 packets in 1000.
ADAPTERS = [
    {"Key": "OFFICE \"LAN\" \\ Größe", "Tests": [
        {"TestID": 1, "Outcome": ["passed", "0x80040311"]}, {"TestID": 2},
        {"TestID": 9, "Statistics": [{"Counter": [999, 999, 1000, 1, 998, 1, 0, 688], "Word": 57, "ByteA": 1,
                                      "ByteB": 1}]}]},
    {"Key": "SECOND LAN", "Tests": [{"TestID": 1}]},
]
NAME = re.compile(r"\bzeb_\w+")

# What the simulated machines show: how many, which recorded document, and by how many days its results are older.
MACHINES = [(150, "healthy", 0), (25, "failed", 0), (15, "healthy", 3), (10, "down", 0)]
COUNT = sum(count for count, _, _ in MACHINES)

documents = {}  # what was recorded, by name
recorded_at = 0


def record(machine, name, code=0):
    machine.wine(ZEBDIAG, "metrics", "--out", r"C:\metrics\zebdiag.prom", fails=code != 0)
    folder = machine.drive / "metrics"
    assert [path.name for path in folder.iterdir()] == ["zebdiag.prom"], "something is left beside the file"
    documents[name] = (folder / "zebdiag.prom").read_bytes().decode()
    shutil.copyfile(folder / "zebdiag.prom", WORK / f"{name}.prom")


def script(machine, adapters):
    (machine.standin / "script.json").write_text(json.dumps({"Adapters": adapters}), encoding="utf-8")


def setUpModule():
    """Installs the package on a machine of its own and records what it writes."""
    global recorded_at
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    prefix = Machine(ROOT / "build/prefix-deploy-metrics")
    prefix.environment["TZ"] = ZONE
    with prefix as machine:
        machine.set_up_service()
        # One provider for all: the agent forgets with it how often a test has run.
        machine.set_value(r"HKLM\SOFTWARE\WMI stand-in", "IdleMilliseconds", 3600000)
        (machine.drive / "metrics").mkdir()
        shutil.copyfile(PACKAGE, machine.standin / "zeb.msi")
        machine.wine("msiexec", "/i", r"C:\standin\zeb.msi", r"MOFCOMP=C:\standin\mofcomp.cmd", "/qn")
        machine.set_value(PRODUCT + r"\VorlTest", "Script", r"C:\standin\script.json")
        for name in ("CheckTime", "TimeoutSndRsp"):
            machine.set_value(PRODUCT + r"\ZebDiag", name, 1)
        # Without adapters the provider does not start.
        script(machine, [])
        record(machine, "down", code=6)
        script(machine, ADAPTERS)
        record(machine, "fresh")
        machine.wine(ZEBDIAG, "run", "--all")
        machine.wine(ZEBDIAG, "run", "--test", "sender")
        recorded_at = time.time()
        record(machine, "healthy")
        machine.wine(ZEBDIAG, "run", "--adapter", "office", "--test", "1", fails=True)
        record(machine, "failed")


def samples(document):
    """{series: value} as text."""
    lines = [line.rsplit(" ", 1) for line in document.splitlines() if not line.startswith("#")]
    assert len(dict(lines)) == len(lines), "a series is there twice"
    return dict(lines)


def written():
    return {re.match(r"\w+", series)[0] for document in documents.values() for series in samples(document)}


def promtool(*arguments, document=None):
    done = subprocess.run(["promtool", *map(str, arguments)], input=document, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, encoding="utf-8", check=False)
    return done.returncode, done.stdout


class Documents(unittest.TestCase):
    def test_promtool_finds_nothing_wrong(self):
        for name, document in documents.items():
            with self.subTest(document=name):
                self.assertEqual((0, ""), promtool("check", "metrics", document=document))

    def test_promtool_finds_what_is_wrong(self):
        for old, new in (("# TYPE zeb_up gauge", "# TYPE zeb_up gouge"), ("zeb_up 1", "zeb_up one"),
                         ("# HELP zeb_up ", "# zeb_up ")):
            self.assertIn(old, documents["healthy"])
            self.assertNotEqual(0, promtool("check", "metrics", document=documents["healthy"].replace(old, new))[0])

    def test_they_are_openmetrics(self):
        for name, document in documents.items():
            with self.subTest(document=name):
                families = list(openmetrics.text_string_to_metric_families(document))
                self.assertEqual({"gauge"}, {family.type for family in families})
                found = [(sample.name, sample.timestamp) for family in families for sample in family.samples]
                self.assertEqual(len(samples(document)), len(found))
                self.assertEqual({None}, {timestamp for _, timestamp in found}, "collectors refuse timestamps")

    def test_a_document_that_was_cut_is_no_openmetrics(self):
        whole = documents["healthy"]
        with self.assertRaises(ValueError):
            list(openmetrics.text_string_to_metric_families(whole[:whole.rindex("# EOF")]))

    def test_they_say_what_the_machine_did(self):
        adapter = r'adapter="OFFICE \"LAN\" \\ GRÖßE"'
        fresh, healthy, failed, down = (samples(documents[name]) for name in ("fresh", "healthy", "failed", "down"))
        states = {name: [re.search(r'state="(\w+)"', series)[1] for series, value in document.items()
                         if series.startswith(f'zeb_test_state{{{adapter},test="1"') and value == "1"]
                  for name, document in (("fresh", fresh), ("healthy", healthy), ("failed", failed))}
        self.assertEqual({"fresh": ["none"], "healthy": ["passed"], "failed": ["failed"]}, states)
        sender = f'{{{adapter},test="9"'
        self.assertEqual("1", healthy[f'zeb_run_info{sender},role="sender"}}'])
        self.assertEqual(("0.000688", "0.057", "1000", "998"), tuple(healthy[f"zeb_run_{name}{sender}}}"] for name in (
            "round_trip_median_seconds", "round_trip_longest_seconds", "sender_sent_packets",
            "sender_received_packets")))
        self.assertEqual(("1", "1"), tuple(healthy[f'zeb_run_lost_packets{sender},direction="{way}"}}']
                                           for way in ("to_responder", "to_sender")))
        self.assertEqual(("1", "0"), (healthy["zeb_up"], down["zeb_up"]))
        self.assertEqual(["6"], [re.search(r'exit_code="(\d)"', series)[1] for series in down
                                 if series.startswith("zeb_failure_info")])
        self.assertIn(f'zeb_build_info{{version="{VERSION}",format="1"}}', down)

    def test_their_times_are_those_of_the_world(self):
        healthy = samples(documents["healthy"])
        times = {series: float(value) for series, value in healthy.items() if "_timestamp_seconds" in series}
        self.assertEqual(1 + 4 + 4, len(times))  # the document's, and those of four runs
        for series, value in times.items():
            self.assertLess(abs(value - recorded_at), 900, series)
        for series, value in healthy.items():
            if series.startswith("zeb_test_age_seconds"):
                self.assertLess(float(value), 900, series)

    def test_every_metric_is_described(self):
        described = pages.Page(ROOT / "docs/metrics.md").first_cells("Metrics of zebdiag")
        self.assertEqual(sorted(written()), sorted(described))


class Rules(unittest.TestCase):
    def test_each_alert_fires_and_does_not_fire(self):
        code, output = promtool("test", "rules", ROOT / "tests/deploy/prometheus-rules-test.yml")
        self.assertEqual(0, code, output)

    def test_every_alert_is_tested(self):
        alerts = re.findall(r"- alert: (\w+)", RULES.read_text(encoding="utf-8"))
        tests = (ROOT / "tests/deploy/prometheus-rules-test.yml").read_text(encoding="utf-8")
        for alert in alerts:
            expected = re.findall(rf"alertname: {alert}\n\s+exp_alerts:(.*)", tests)
            self.assertEqual({"", " []"}, set(expected), alert)

    def test_the_documented_configuration_is_understood(self):
        blocks = pages.Page(ROOT / "docs/fleet.md").blocks
        config, = (block.text for block in blocks if "scrape_configs:" in block.lines)
        folder = WORK / "documented"
        folder.mkdir(exist_ok=True)
        shutil.copy(RULES, folder)
        (folder / "prometheus.yml").write_text(config, encoding="utf-8")
        code, output = promtool("check", "config", folder / "prometheus.yml")
        self.assertEqual(0, code, output)
        self.assertIn("rules found", output)

    def test_they_name_only_what_is_written(self):
        self.assertEqual(set(), set(NAME.findall(RULES.read_text(encoding="utf-8"))) - written())


class Machines(http.server.BaseHTTPRequestHandler):
    """What 200 exporters would serve; every second one as OpenMetrics, the others in the older format."""
    pages = {}

    def do_GET(self):
        page = self.pages.get(self.path)
        self.send_response(200 if page else 404)
        if page:
            self.send_header("Content-Type", page[0])
            self.end_headers()
            self.wfile.write(page[1])
        else:
            self.end_headers()

    def log_message(self, *_):
        pass


@contextlib.contextmanager
def served():
    """The port at which the machines are."""
    days, number = {}, 0
    for count, name, age in MACHINES:
        for _ in range(count):
            kind = "application/openmetrics-text; version=1.0.0; charset=utf-8" if number % 2 else \
                "text/plain; version=0.0.4; charset=utf-8"
            older = re.sub(r"^(zeb_test_(?:start|end)_timestamp_seconds\{.*\}) (\d+)$",
                           lambda found, age=age: f"{found[1]} {int(found[2]) - age * 86400}", documents[name],
                           flags=re.MULTILINE)
            days[f"/pc{number:03}"] = (kind, older.encode())
            number += 1
    Machines.pages = days
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Machines)
    thread = threading.Thread(target=server.serve_forever)
    thread.start()
    try:
        yield server.server_address[1]
    finally:
        server.shutdown()
        thread.join()
        server.server_close()


@contextlib.contextmanager
def prometheus(port):
    """The address of one that scrapes the machines at this port."""
    config = WORK / "prometheus.yml"  # JSON is YAML
    config.write_text(json.dumps({
        "global": {"scrape_interval": "10s", "evaluation_interval": "5s"},
        "rule_files": [str(RULES)],
        "scrape_configs": [{"job_name": "zeb", "static_configs": [
            {"targets": [f"127.0.0.1:{port}"], "labels": {"__metrics_path__": path, "instance": path.strip("/")}}
            for path in sorted(Machines.pages)]}]}), encoding="utf-8")
    code, output = promtool("check", "config", config)
    assert code == 0, output
    log = WORK / "prometheus.log"
    with open(log, "wb") as file:
        process = subprocess.Popen(["prometheus", f"--config.file={config}", f"--storage.tsdb.path={WORK / 'data'}",
                                    "--web.listen-address=127.0.0.1:0"], stdin=subprocess.DEVNULL, stdout=file,
                                   stderr=subprocess.STDOUT)
    try:
        # The system has chosen the port.
        address = tried(lambda: re.search(r'msg="Listening on" address=(\S+:[1-9]\d*)', log.read_text("utf-8")))[1]
        tried(lambda: ready(address))
        yield address
    finally:
        process.terminate()
        try:
            process.wait(60)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


def tried(question, times=180):
    """Prometheus tells nobody when it has got so far, so it is asked, once a second."""
    for _ in range(times):
        answer = question()
        if answer:
            return answer
        time.sleep(1)
    raise AssertionError(f"not within {times} s; {WORK / 'prometheus.log'} may tell why")


def ready(address):
    try:
        with urllib.request.urlopen(f"http://{address}/-/ready", timeout=10) as answer:
            return answer.status == 200
    except OSError:
        return False


class Server(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.address = cls.enterClassContext(prometheus(cls.enterClassContext(served())))
        tried(lambda: cls.value("count(up == 1)") == COUNT)
        # What of all of them is the last.
        tried(lambda: cls.value("count(zeb_build_info)") == COUNT)

    @classmethod
    def api(cls, path, **parameters):
        url = f"http://{cls.address}/api/v1/{path}?{urllib.parse.urlencode(parameters)}"
        try:
            with urllib.request.urlopen(url, timeout=60) as answer:
                return json.load(answer)["data"]
        except urllib.error.HTTPError as error:
            raise AssertionError(f"{parameters}: {error.read().decode()}") from None

    @classmethod
    def value(cls, query):
        result = cls.api("query", query=query)["result"]
        return float(result[0]["value"][1]) if result else None

    def test_all_machines_are_up(self):
        targets = self.api("targets")["activeTargets"]
        self.assertEqual(COUNT, len(targets))
        self.assertEqual([], [target["lastError"] for target in targets if target["health"] != "up"])

    def test_what_they_wrote_is_there(self):
        down = sum(count for count, name, _ in MACHINES if name == "down")
        failed = sum(count for count, name, _ in MACHINES if name == "failed")
        self.assertEqual(COUNT - down, self.value("sum(zeb_up)"))
        self.assertEqual(failed, self.value('sum(zeb_test_state{state="failed"})'))
        self.assertEqual((COUNT - down) * 4, self.value("sum(zeb_test_state)"), "one state for each test")
        expected = sum(count * len(samples(documents[name])) for count, name, _ in MACHINES)
        self.assertEqual(expected, self.value('count({__name__=~"zeb_.*"})'))
        # Both formats are read as the same.
        self.assertEqual(1, self.value('count(group by (adapter) (zeb_run_info))'))

    def test_alerts_fire_for_those_that_they_are_about(self):
        machines = {}
        number = 0
        for count, name, age in MACHINES:
            machines.setdefault((name, age), []).extend(f"pc{number + i:03}" for i in range(count))
            number += count
        with_results = machines["healthy", 0] + machines["failed", 0] + machines["healthy", 3]
        expected = {("ZebTestFailed", "firing"): machines["failed", 0],
                    ("ZebResultTooOld", "firing"): machines["healthy", 3],
                    ("ZebPacketsLost", "firing"): with_results,
                    ("ZebProviderDown", "pending"): machines["down", 0]}

        def alerts():
            found = {}
            for alert in self.api("alerts")["alerts"]:
                found.setdefault((alert["labels"]["alertname"], alert["state"]), set()).add(alert["labels"]["instance"])
            return {key: sorted(instances) for key, instances in found.items()}

        wanted = {key: sorted(instances) for key, instances in expected.items()}
        with contextlib.suppress(AssertionError):
            tried(lambda: alerts() == wanted)
        self.assertEqual(wanted, alerts())

    def test_the_dashboard_shows_something_everywhere(self):
        dashboard = json.loads(DASHBOARD.read_text(encoding="utf-8"))
        panels = [panel for panel in dashboard["panels"] if panel["type"] != "row"]
        self.assertGreater(len(panels), 5)
        for panel in panels:
            self.assertTrue(panel["targets"], panel["title"])
            for target in panel["targets"]:
                query = target["expr"].replace("$instance", ".*")
                with self.subTest(panel=panel["title"], query=query):
                    self.assertNotIn("$", query, "a variable that is not known here")
                    self.assertEqual(set(), set(NAME.findall(query)) - written())
                    self.assertTrue(self.api("query", query=query)["result"], "nothing to show")

    def test_the_dashboard_asks_for_machines_that_are_there(self):
        variables = {variable["name"]: variable
                     for variable in json.loads(DASHBOARD.read_text(encoding="utf-8"))["templating"]["list"]}
        self.assertEqual({"datasource", "instance"}, set(variables))
        metric, label = re.fullmatch(r"label_values\((\w+), (\w+)\)", variables["instance"]["query"]).groups()
        self.assertIn(metric, written())
        self.assertEqual(COUNT, len(self.api(f"label/{label}/values", **{"match[]": metric})))

    def test_a_query_that_is_wrong_is_refused(self):
        with self.assertRaises(AssertionError):
            self.api("query", query="sum(zeb_up")


if __name__ == "__main__":
    del sys.argv[1:3]
    unittest.main(failfast=True, verbosity=2)
