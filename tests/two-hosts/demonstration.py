#!/usr/bin/env python3
"""Sender and responder as their users see them, on two hosts that are made for it: over a good cable, and over one that
loses packets. Ends well where two hosts cannot be made, and says why.

usage: demonstration.py
"""
import contextlib
import pathlib
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
import hosts

RESPONDER = ("run", "--test", "responder", "--no-quick")
STOP = ("stop", "--test", "responder")


def say(text):
    print(text, flush=True)


def shown(host, *arguments):
    """Runs zebdiag on a host as in its console; the exit code."""
    say(f"{host.name} > zebdiag {' '.join(arguments)}")
    return subprocess.run(host.inside(*host.zebdiag(*arguments)), env=host.environment(), cwd=hosts.ROOT,
                          stdin=subprocess.DEVNULL, check=False, timeout=120).returncode


def prepare(host):
    """The values of a new installation, whatever a test has left; a look at the counters each second."""
    host.forget_settings()
    host.set_number("CheckTime", 1)


@contextlib.contextmanager
def responder(host, folder):
    """A responder that waits on a host; what its console shows is shown in the end."""
    say(f"{host.name} > zebdiag {' '.join(RESPONDER)}          (its console is shown below)")
    path = folder / "responder"
    with open(path, "wb") as output:
        process = host.start(*host.zebdiag(*RESPONDER), output=output)
    try:
        host.wait_for_port(hosts.PORT)
        yield
    finally:
        shown(host, *STOP)
        process.wait(60)
    say(f"\n{host.name}, whose responder has answered all the time:")
    say(path.read_text(encoding="utf-8", errors="replace").rstrip())


def measure(pair, folder):
    sender = ("run", "--test", "sender", "--peer", pair.right.address4)
    with responder(pair.right, folder):
        good = shown(pair.left, *sender)
        say("\n# The same with a cable that loses one of 20 packets on the way back.")
        pair.lose(pair.left, hosts.TO_SENDER, 20)
        bad = shown(pair.left, *sender)
    if (good, bad) != (0, 1):
        raise hosts.Failed(f"the sender ended with {good} and {bad}, and not with 0 and 1")


def main():
    reason = hosts.missing()
    if reason:
        say(f"This part is left out: {reason}.")
        return
    with tempfile.TemporaryDirectory() as folder, contextlib.closing(hosts.Pair()) as pair:
        pair.for_both(prepare)
        measure(pair, pathlib.Path(folder))


try:
    main()
except (hosts.Failed, subprocess.TimeoutExpired) as failure:
    sys.exit(f"The demonstration of two hosts has failed: {failure}")
