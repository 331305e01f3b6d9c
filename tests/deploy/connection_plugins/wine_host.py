"""A Wine prefix as a Windows host of Ansible.

Plays the part that PowerShell has on a real host: reads the only form of command that the collection sends, takes the
literal out of it and hands it to the command processor.
"""
import pathlib
import re
import signal
import subprocess
import time

from ansible.errors import AnsibleError
from ansible.plugins.connection import ConnectionBase

DOCUMENTATION = """
  name: wine_host
  short_description: A Wine prefix as a host
  description: Runs commands in a Wine prefix, gives a recorded answer, or none at all.
  options:
    prefix:
      description: The prefix in which commands are run.
      vars: [{name: wine_prefix}]
    answer:
      description: A file whose text is the answer to every command.
      vars: [{name: recorded_answer}]
    hangs:
      description: A file that gets the names of what is in C(watched) when this host, which never answers, is given up.
      vars: [{name: hangs}]
    watched:
      description: The folder that a host which hangs looks at when it is given up.
      vars: [{name: watched}]
    awaited:
      description: How many files in C(watched) bring the time-out forward, so that a test does not wait for its end.
      type: int
      default: 0
      vars: [{name: awaited}]
"""
ROOT = pathlib.Path(__file__).resolve().parents[3]
COMMAND = re.compile(r"cmd /c '((?:[^'\u2018-\u201b]|(['\u2018-\u201b])\2)*)'; exit \$LASTEXITCODE")


class Connection(ConnectionBase):
    transport = "wine_host"
    has_pipelining = False

    def __init__(self, *args, **kwargs):
        self.module_implementation_preferences = (".ps1", ".exe", "")
        self.allow_executable = False
        super().__init__(*args, **kwargs)

    def _connect(self):
        return self

    def exec_command(self, cmd, in_data=None, sudoable=True):
        super().exec_command(cmd, in_data=in_data, sudoable=sudoable)
        found = COMMAND.fullmatch(cmd)
        if not found:
            raise AnsibleError(f"This is not the form of command that a host understands: {cmd}")
        if self.get_option("hangs"):
            self._hang()
        if self.get_option("answer"):
            return 0, pathlib.Path(self.get_option("answer")).read_bytes(), b""
        return self._run(re.sub(r"(['\u2018-\u201b])\1", r"\1", found.group(1)))

    def _hang(self):
        there, brought_forward = [], False
        try:
            while True:
                time.sleep(1)
                there = sorted(path.name for path in pathlib.Path(self.get_option("watched")).glob("*.json"))
                if not brought_forward and 0 < self.get_option("awaited") <= len(there):
                    # Ansible's time-out is this alarm.
                    brought_forward = True
                    signal.alarm(2)
        finally:
            pathlib.Path(self.get_option("hangs")).write_text("".join(name + "\n" for name in there), encoding="utf-8")

    def _run(self, line):
        """Through a command file: it hands the line on as it stands, and its exit code is not cut to eight bits."""
        prefix = pathlib.Path(self.get_option("prefix"))
        folder = prefix / "drive_c/host"
        folder.mkdir(exist_ok=True)
        (folder / "command.cmd").write_bytes(
            f'@cmd /c "{line}"\r\n@echo %errorlevel% >C:\\host\\code.txt\r\n'.encode())
        (folder / "code.txt").unlink(missing_ok=True)
        # Files, because what goes on running would hold a pipe open.
        with open(folder / "stdout", "wb") as stdout, open(folder / "stderr", "wb") as stderr:
            subprocess.run(["bash", "-c", '. "$1/scripts/wine-env.sh" "$2" && exec wine cmd /c "$3"', "-",
                            ROOT, prefix, r"C:\host\command.cmd"], stdin=subprocess.DEVNULL, stdout=stdout,
                           stderr=stderr, check=False)
        code = int((folder / "code.txt").read_text(encoding="ascii"))
        return code & 0xFFFFFFFF, (folder / "stdout").read_bytes(), (folder / "stderr").read_bytes()

    def put_file(self, in_path, out_path):
        raise AnsibleError("Only plain commands are allowed.")

    def fetch_file(self, in_path, out_path):
        raise AnsibleError("Only plain commands are allowed.")

    def close(self):
        pass
