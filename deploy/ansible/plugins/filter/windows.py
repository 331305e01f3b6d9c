"""The text of a command for a Windows host.

Ansible hands the text of a raw task to PowerShell, over SSH as well as over WinRM. PowerShell and the console's command
processor read quotation marks differently, so PowerShell gets a literal and passes it on as a whole, and only the
command processor and the program take it apart.
"""
import re

from ansible.errors import AnsibleFilterError

PLAIN = re.compile(r"[A-Za-z0-9_.:/\\=+@{}-]+")
# All of these end a literal of PowerShell, and each of them stands for itself when it is doubled.
QUOTES = re.compile("(['\u2018\u2019\u201a\u201b])")


def _argument(value, expand):
    text = str(value)
    if re.search(r'["\x00-\x1f]', text) or (text.endswith("\\") and not PLAIN.fullmatch(text)):
        raise AnsibleFilterError(f"This cannot be passed to a Windows program: {text!r}")
    if "%" in text and not expand:
        raise AnsibleFilterError(f"A percent sign would stand for a variable of the host: {text!r}")
    return text if PLAIN.fullmatch(text) else f'"{text}"'


def windows_command(commands, expand=False):
    """One line that runs the commands (lists of program and arguments) one after the other, whatever becomes of each;
    its exit code is the last one's. Variables of the host, such as %ProgramFiles%, are allowed in programs, and with
    `expand` in arguments as well."""
    lines = (" ".join(_argument(word, expand or place == 0) for place, word in enumerate(command))
             for command in commands)
    return "cmd /c '" + QUOTES.sub(r"\1\1", " & ".join(lines)) + "'; exit $LASTEXITCODE"


def _names(value):
    """A list; what the command line gives is a text with commas."""
    return [name.strip() for name in value.split(",") if name.strip()] if isinstance(value, str) else list(value)


def run_commands(program, tests, adapters, locale, timeout):
    """The commands of zebdiag for these tests and adapters; empty lists mean all that there are."""
    return [[program, "run", *test, *adapter, "--locale", locale, "--timeout", timeout, "--json"]
            for test in [["--test", name] for name in _names(tests)] or [["--all"]]
            for adapter in [["--adapter", name] for name in _names(adapters)] or [[]]]


class FilterModule:
    """The filters of this file."""

    def filters(self):
        return {"windows_command": windows_command, "run_commands": run_commands}
