#!/usr/bin/env python3
"""Sender and responder on two hosts: what was lost, came twice or out of order between them is what the result says.

usage: two_hosts_test.py [TEST ...]    the names of unittest, such as TwoHosts.test_counts_what_is_lost
Exits 77 where two hosts cannot be made, and says why.
"""
import contextlib
import json
import pathlib
import secrets
import signal
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
import hosts
import peers

HERE = pathlib.Path(__file__).resolve().parent
ENOUGH = 200  # packets that end a run
SENT = "Packets sent by the sender"
RECEIVED = "Replies received by the sender"
LOST_THERE = "Packets lost on the way to the responder"
LOST_BACK = "Packets lost on the way back"
ODD = "Packets that came twice or out of order"
ROUND_TRIP = "Median round trip in microseconds"

# name, where packets are lost, one in how many
LOSSES = (
    ("nothing", None, 0),
    ("1 % there", "there", 100),
    ("1 % back", "back", 100),
    ("10 % there", "there", 10),
    ("10 % back", "back", 10),
)


def result_of(document):
    """The one result of a run; a document that has none says why."""
    runs = document.get("runs", [])
    if len(runs) != 1 or not runs[0]["result"]:
        raise AssertionError(f"no result: {document}")
    return runs[0]["result"]


def numbers(document):
    """The counters of the result of a run, by their texts."""
    found = {}
    for finding in result_of(document)["findings"]:
        text, _, value = finding.rpartition(": ")
        if value.strip().lstrip("-").isdigit():
            found[text.split(" (")[0]] = int(value)
    return found


class TwoHosts(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.pair = hosts.Pair()
        cls.addClassCleanup(cls.pair.close)
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.key = cls.folder / "key"
        cls.key.write_text(secrets.token_hex(32), encoding="ascii")
        for host in (cls.pair.left, cls.pair.right):
            host.forget_settings()
            for name, value in (("MaxPktsRcvd", ENOUGH), ("CheckTime", 1), ("PacketsPerSecond", 500),
                                ("LossLimit", 100), ("WaitForSender", 0)):
                host.set_number(name, value)
            host.set_number("TimeoutSndRsp", 300)

    def setUp(self):
        self.use_mode("open")
        self.addCleanup(self.pair.lose_nothing)

    def use_mode(self, mode):
        for host in (self.pair.left, self.pair.right):
            host.set_number("Authenticate", int(mode == "authenticated"))
            host.set_text("KeyFile", f"Z:{self.key}".replace("/", "\\"))

    @contextlib.contextmanager
    def responder(self):
        """A responder that listens on the right host."""
        run = hosts.Run(self.pair.right, ["run", "--test", "responder", "--no-quick"], self.folder)
        try:
            self.pair.right.wait_for_port(hosts.PORT)
            yield run
        finally:
            self.pair.right.run(*self.pair.right.zebdiag("stop", "--test", "responder"))
            self.responded = run.finish()

    def measure(self, peer, port=hosts.PORT):
        self.pair.left.set_text("Peer", peer)
        self.pair.left.set_number("PeerPort", port)
        return hosts.Run(self.pair.left, ["run", "--test", "sender"], self.folder).finish()

    def peer(self, host, *arguments):
        output = open(self.folder / f"{arguments[0]}.out", "w+", encoding="utf-8")
        self.addCleanup(output.close)
        return output, host.start("/usr/bin/python3", HERE / "peers.py", *arguments, output=output)

    def end_peer(self, output, process):
        process.send_signal(signal.SIGTERM)
        process.wait(10)
        output.seek(0)
        return output.read()

    def test_counts_what_is_lost(self):
        for mode in ("open", "authenticated"):
            self.use_mode(mode)
            with self.responder():
                for family in ("address4", "address6"):
                    for name, way, one_in in LOSSES:
                        with self.subTest(mode=mode, family=family, loss=name):
                            self.check_loss(getattr(self.pair.right, family), way, one_in)

    def check_loss(self, peer, way, one_in):
        if way == "there":
            self.pair.lose(self.pair.right, hosts.TO_RESPONDER, one_in)
        elif way == "back":
            self.pair.lose(self.pair.left, hosts.TO_SENDER, one_in)
        try:
            document = self.measure(peer)
        finally:
            self.pair.lose_nothing()
        self.assertEqual("passed", result_of(document)["state"], document)
        found = numbers(document)
        sent = found[SENT]
        self.assertGreaterEqual(sent, ENOUGH)
        expected = {LOST_THERE: 0, LOST_BACK: 0, ODD: 0}
        if way == "there":
            expected[LOST_THERE] = sent // one_in
        elif way == "back":
            expected[LOST_BACK] = sent // one_in
        self.assertEqual(expected, {text: found[text] for text in expected}, found)
        self.assertEqual(sent - sum(expected.values()), found[RECEIVED], found)

    def test_counts_what_comes_twice_and_out_of_order(self):
        with self.responder():
            relay = self.peer(self.pair.right, "relay", self.pair.right.address4, 8620, hosts.PORT)
            try:
                found = numbers(self.measure(self.pair.right.address4, 8620))
            finally:
                done = json.loads(self.end_peer(*relay))
        self.assertEqual(0, found[LOST_THERE] + found[LOST_BACK], found)
        # The relay goes on for a moment after the poll that the result shows.
        self.assertEqual(done["answers"] // peers.ODD_EACH, done["twice"] + done["late"])
        self.assertEqual(found[RECEIVED] // peers.ODD_EACH, found[ODD], (found, done))

    def test_fails_beyond_the_limit(self):
        self.pair.left.set_number("LossLimit", 1)
        self.addCleanup(self.pair.left.set_number, "LossLimit", 100)
        with self.responder():
            self.pair.lose(self.pair.left, hosts.TO_SENDER, 10)
            document = self.measure(self.pair.right.address4)
        self.assertEqual("failed", result_of(document)["state"], document)
        self.assertIn("back", " ".join(result_of(document)["findings"]))

    def test_a_peer_that_refuses(self):
        document = self.measure(self.pair.right.address4)
        self.assertEqual("failed", result_of(document)["state"], document)

    def test_options_of_a_run_leave_the_registry_as_it_was(self):
        left = self.pair.left
        for name in ("Peer", "PeerPort", "PacketSize"):
            left.forget(name)
        before = left.settings()
        self.assertNotIn("Peer", before)
        self.assertEqual(["REG_DWORD", hex(500)], before["PacketsPerSecond"])
        arguments = ["run", "--test", "sender", "--peer", self.pair.right.address4, "--port", str(hosts.PORT),
                     "--rate", "400", "--size", "200"]
        # Packets of any other size do not arrive.
        self.pair.lose(self.pair.right, f"{hosts.TO_RESPONDER} udp length != {8 + 200}", 1)
        with self.responder():
            document = hosts.Run(left, arguments, self.folder).finish()
        self.assertEqual("passed", result_of(document)["state"], document)
        found = numbers(document)
        self.assertGreaterEqual(found[SENT], ENOUGH)
        self.assertEqual(0, found[LOST_THERE] + found[LOST_BACK], found)
        self.assertEqual(before, left.settings())

        document = hosts.Run(left, arguments, self.folder).finish()  # now without a responder
        self.assertEqual("failed", result_of(document)["state"], document)
        self.assertEqual(before, left.settings())

    def test_somebody_elses_sender_measures_our_responder(self):
        with self.responder():
            text = self.pair.left.run("/usr/bin/python3", HERE / "peers.py", "send", self.pair.right.address4, 50)
        found = json.loads(text)
        print(f"scapy's sender: {found['sent']} sent, {len(found['answers'])} answered, median round trip "
              f"{found['round_trip_us']:.0f} us")
        self.assertEqual(list(range(50)), [answer["seq_sender"] for answer in found["answers"]])
        self.assertEqual(list(range(50)), [answer["seq"] for answer in found["answers"]])
        for answer in found["answers"]:
            self.assertEqual((44, 7), (answer["length"], answer["ssid"]))
            self.assertGreaterEqual(answer["delay"], 0)

    def test_our_sender_measures_somebody_elses_reflector(self):
        reflector = self.peer(self.pair.right, "reflect", self.pair.right.address4, hosts.PORT)
        try:
            self.pair.right.wait_for_port(hosts.PORT)
            document = self.measure(self.pair.right.address4)
        finally:
            self.end_peer(*reflector)
        found = numbers(document)
        print("Our sender and scapy's reflector:", found)
        self.assertEqual("passed", result_of(document)["state"], document)
        self.assertEqual(0, found[LOST_THERE] + found[LOST_BACK] + found[ODD], found)


if __name__ == "__main__":
    reason = hosts.missing()
    if reason:
        print(f"Skipped: {reason}.")
        sys.exit(77)
    unittest.main(verbosity=2)
