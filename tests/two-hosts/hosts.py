"""Two hosts on one machine: two network namespaces with a cable between them, and a Wine prefix in each.

What is made here is gone when the object is closed. Needs root, and a kernel that makes namespaces, pairs of veth and
nftables; `missing()` says what is not there.
"""
import concurrent.futures
import contextlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build"
SETTINGS = r"HKLM\SOFTWARE\Veltrane\Halvern\ZEB\ZebDiag"
AGENT = r"HKLM\SOFTWARE\Veltrane\Halvern\ZEB\WMI\Providers"
PORT = 862
# The test packets, as rules see them.
TO_RESPONDER = f"udp dport {PORT}"
TO_SENDER = f"udp sport {PORT}"

# name, address of version 4, of version 6
HOSTS = (("left", "10.86.2.1", "fd86:2::1"), ("right", "10.86.2.2", "fd86:2::2"))


class Failed(Exception):
    """A step of making the hosts has failed; the text says which."""


def run(*command, limit=60, **more):
    """What the command printed. To a file, because what goes on running under Wine would keep a pipe open."""
    with tempfile.TemporaryFile("w+", encoding="utf-8", errors="replace") as output:
        try:
            code = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                                  check=False, timeout=limit, **more).returncode
        except subprocess.TimeoutExpired:
            code = f"no end within {limit} seconds"
        output.seek(0)
        text = output.read()
    if code != 0:
        raise Failed(f"{' '.join(map(str, command))} ({code}): {text.strip()}")
    return text


def loss(ports, one_in):
    """The rules that drop every `one_in`-th of the packets with these ports that arrive."""
    return f"""
        table inet loss {{
          chain arriving {{
            type filter hook prerouting priority raw; policy accept;
            {ports} numgen inc mod {one_in} {one_in - 1} counter drop
          }}
        }}"""


def missing():
    """What two hosts cannot be made without on this machine, in one sentence; None if it is all there."""
    if os.geteuid() != 0:
        return "network namespaces can be made by root only"
    for program in ("ip", "nft"):
        if not shutil.which(program):
            return f"the program {program} is not installed"
    name = f"zeb-probe-{os.getpid()}"
    try:
        run("ip", "netns", "add", name)
        try:
            run("ip", "-n", name, "link", "add", "probe", "type", "veth", "peer", "name", "other")
            run("ip", "-n", name, "address", "add", "fd86:2::3/64", "dev", "probe", "nodad")
            run("ip", "netns", "exec", name, "nft", loss("udp dport 9", 10))
        finally:
            run("ip", "netns", "del", name)
    except Failed as failure:
        return f"this machine does not let us make two hosts ({failure})"
    return None


class Host:
    """One of the two: a network namespace and a Wine prefix where the product is registered."""

    def __init__(self, name, address4, address6, build=BUILD):
        self.name = name
        self.address4 = address4
        self.address6 = address6
        self.space = f"zeb-{name}-{os.getpid()}"
        self.prefix = build / f"prefix-{name}"
        self.build = build
        self.stays = None

    def environment(self):
        return {**os.environ, "WINEPREFIX": str(self.prefix), "WINEARCH": "win64", "WINEDEBUG": "-all",
                "WINEDLLOVERRIDES": "mscoree,mshtml=;winemenubuilder.exe,explorer.exe=d"}

    def inside(self, *command):
        """The command line that runs a command in this host."""
        return ("ip", "netns", "exec", self.space, *map(str, command))

    def run(self, *command, **more):
        return run(*self.inside(*command), env=self.environment(), cwd=ROOT, **more)

    def start(self, *command, output):
        # Of a file: what goes on running in the prefix keeps the output of who has started it.
        return subprocess.Popen(self.inside(*command), env=self.environment(), cwd=ROOT, stdin=subprocess.DEVNULL,
                                stdout=output, stderr=subprocess.STDOUT)

    def register(self):
        run("scripts/wine-prefix", self.prefix, cwd=ROOT, limit=180)
        self.stop()  # what an earlier one has left
        self.run("scripts/register", self.prefix, limit=180)
        # As long as a program runs, Wine's own services need not be started for each of the others.
        self.stays = subprocess.Popen(self.inside("wine", "cmd.exe", "/q"), env=self.environment(),
                                      stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.set_number("TestVorl", 0, key=AGENT)

    def set_number(self, name, value, key=SETTINGS):
        self.run("wine", "reg", "add", key, "/v", name, "/t", "REG_DWORD", "/d", value, "/f")

    def set_text(self, name, value, key=SETTINGS):
        self.run("wine", "reg", "add", key, "/v", name, "/t", "REG_SZ", "/d", value, "/f")

    def settings(self):
        """The values as the registry's own client prints them, by their names."""
        lines = self.run("wine", "reg", "query", SETTINGS).splitlines()
        return {line.split()[0]: line.split()[1:] for line in lines if line.startswith("    ")}

    def forget(self, name):
        with contextlib.suppress(Failed):
            self.run("wine", "reg", "delete", SETTINGS, "/v", name, "/f")

    def forget_settings(self):
        with contextlib.suppress(Failed):
            self.run("wine", "reg", "delete", SETTINGS, "/f")

    def zebdiag(self, *arguments):
        # English, whatever the language of whoever looks at it.
        return ("wine", self.build / "bin/zebdiag.exe", *arguments, "--locale", "en-US")

    def wait_for_port(self, port):
        """Until a program of this host receives at the UDP port."""
        ends = time.monotonic() + 60
        while f":{port:04X} " not in self.run("cat", "/proc/net/udp", "/proc/net/udp6"):
            if time.monotonic() > ends:
                raise Failed(f"nothing receives at port {port} of {self.name}")
            time.sleep(0.05)

    def stop(self):
        with contextlib.suppress(Failed):
            self.run("wineserver", "-k")
        with contextlib.suppress(Failed):
            self.run("wineserver", "-w", limit=30)
        if self.stays:
            self.stays.communicate()
            self.stays = None


class Run:
    """A run of zebdiag that goes on beside the test."""

    def __init__(self, host, arguments, folder):
        self.file = folder / f"{host.name}-{time.monotonic_ns()}.json"
        with open(self.file, "wb") as output:
            self.process = host.start(*host.zebdiag(*arguments), "--json", output=output)

    def finish(self, limit=120):
        """The document that it printed."""
        try:
            self.process.wait(limit)
        except subprocess.TimeoutExpired:
            self.process.send_signal(signal.SIGKILL)
            raise Failed(f"{self.process.args} did not end within {limit} seconds") from None
        text = self.file.read_text(encoding="utf-8", errors="replace")
        try:
            return json.loads(text)
        except json.JSONDecodeError:
            raise Failed(f"{self.process.args} printed no document: {text}") from None


class Pair:
    """Both hosts and what lies between them."""

    def __init__(self):
        self.left, self.right = (Host(*row) for row in HOSTS)
        self._ends = contextlib.ExitStack()
        try:
            self._connect()
            for host in (self.left, self.right):
                self._ends.callback(host.stop)
            self.for_both(Host.register)
        except BaseException:
            self.close()
            raise

    def close(self):
        self._ends.close()

    def for_both(self, action):
        """Takes an action on both hosts at once."""
        with concurrent.futures.ThreadPoolExecutor() as threads:
            list(threads.map(action, (self.left, self.right)))

    @staticmethod
    def _remove_what_is_left():
        """Of a test that was killed: its spaces carry its number."""
        for name in run("ip", "netns", "list").split():
            left = re.fullmatch(r"zeb-(?:left|right)-(\d+)", name)
            if left and not os.path.exists(f"/proc/{left[1]}"):
                run("ip", "netns", "del", name)

    def _connect(self):
        self._remove_what_is_left()
        for host in (self.left, self.right):
            run("ip", "netns", "add", host.space)
            self._ends.callback(run, "ip", "netns", "del", host.space)
        run("ip", "-n", self.left.space, "link", "add", "eth0", "type", "veth", "peer", "name", "eth0", "netns",
            self.right.space)
        for host, other in ((self.left, self.right), (self.right, self.left)):
            ip = ("ip", "-n", host.space)
            run(*ip, "link", "set", "lo", "up")
            run(*ip, "link", "set", "eth0", "up")
            run(*ip, "address", "add", f"{host.address4}/24", "dev", "eth0")
            run(*ip, "address", "add", f"{host.address6}/64", "dev", "eth0", "nodad")
            # An adapter with a gateway is the one that connects a machine to its network.
            run(*ip, "route", "add", "default", "via", other.address4)

    def lose(self, host, ports, one_in):
        """Lets every `one_in`-th of the test packets that come to `host` be lost. `ports`: "udp dport 862"."""
        host.run("nft", loss(ports, one_in))

    def lose_nothing(self):
        for host in (self.left, self.right):
            with contextlib.suppress(Failed):
                host.run("nft", "delete", "table", "inet", "loss")
