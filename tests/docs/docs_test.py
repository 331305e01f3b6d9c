"""Checks the documents: what they link to, what they name, and whether the commands in them are understood.
usage: docs_test.py ZEBDIAG_EXE [unittest's arguments]

Every block of a page says behind its fence what it is; pages.py has the list. Every line of commands that begins with
"zebdiag" is given to that program in a Wine prefix without a management service: it must not answer that the command
line cannot be understood. A block of VBScript has to be a script that a test runs.
"""
import pathlib
import re
import subprocess
import sys
import unittest

import pages
from pages import ROOT

PAGES = pages.all_pages()
BY_NAME = {page.name: page for page in PAGES}
NOT_UNDERSTOOD = 7

# Blocks of VBScript that no test runs: their first difference from all scripts, and the reason.
SCRIPTS_NOT_RUN = {"setting.Put_": "Wine's scripting objects do not put instances"}

# Code in the prose that is in no source: an account of Windows, and the beginning of names.
FOREIGN = {"NetworkService", "Tolva_", "LocalAccountTokenFilterPolicy", "pc01", "pc02", "pc03"}


def read_sources():
    texts = {}
    for path in pages.project_files():
        if path.suffix != ".md" and path != pathlib.Path(__file__).resolve():
            try:
                texts[str(path.relative_to(ROOT))] = path.read_text(encoding="utf-8")
            except UnicodeDecodeError:
                pass
    return texts


SOURCES = read_sources()
ALL_SOURCES = "\n".join(SOURCES.values())
WORDS = set(re.findall(r"\w+", ALL_SOURCES))


class Links(unittest.TestCase):
    def test_files_and_anchors_exist(self):
        for page in PAGES:
            for link in page.links:
                if re.match(r"\w+:", link):
                    continue
                file, _, anchor = link.partition("#")
                target = (page.path.parent / file).resolve() if file else page.path
                with self.subTest(page=page.name, link=link):
                    self.assertTrue(target.exists(), "there is no such file")
                    if anchor:
                        self.assertIn(anchor, pages.Page(target).anchors())

    def test_every_document_is_linked_from_another(self):
        linked = {(page.path.parent / link.partition("#")[0]).resolve()
                  for page in PAGES for link in page.links if not link.startswith("#")}
        for page in PAGES:
            if page.name != "README.md":
                self.assertIn(page.path, linked, page.name)


class Blocks(unittest.TestCase):
    def test_each_says_what_it_is(self):
        for page in PAGES:
            for block in page.blocks:
                self.assertIn(block.language, pages.LANGUAGES, block.where)

    def test_scripts_are_those_that_tests_run(self):
        folder = ROOT / "tests/system/provider"
        scripts = {path.read_text(encoding="utf-8"): path.name for path in folder.glob("scripts/*.vbs")}
        tests = "".join(path.read_text(encoding="utf-8") for path in folder.glob("*.cpp"))
        not_run = dict(SCRIPTS_NOT_RUN)
        for page in PAGES:
            for block in page.blocks:
                if block.language != "vbscript":
                    continue
                if block.text in scripts:
                    self.assertIn(f'RunScript(L"{scripts[block.text]}"', tests, block.where)
                else:
                    reason = next((mark for mark in not_run if mark in block.text), None)
                    self.assertIsNotNone(reason, f"{block.where} is no script of {folder.name}/scripts")
                    del not_run[reason]
        self.assertEqual({}, not_run, "blocks that are no longer there")


class Commands(unittest.TestCase):
    # What stands for something else in a command that the prose shows.
    PLACES = {"COMMAND": "list", "N": "50", "S": "60", "SECONDS": "60"}
    NAME = re.compile(r"zebdiag ([a-z]+)")

    def in_blocks(self):
        for page in PAGES:
            for block in page.blocks:
                for command in block.commands():
                    yield block.where, command.strip()
            for line in page.lines:
                if line.startswith("    zebdiag "):
                    yield page.name, line.strip()

    def in_prose(self):
        return [(page.name, code) for page in PAGES for code in page.code]

    def whole_commands(self):
        found = {}
        whole = [one for one in self.in_prose() if not self.NAME.fullmatch(one[1])]
        for where, command in [*self.in_blocks(), *whole]:
            command = re.sub(r"\s+(>|\||\().*$", "", command)  # redirection, and words that a session has added
            if command.startswith("zebdiag ") and "..." not in command:
                words = [self.PLACES.get(word, word) for word in command.split(" ")]
                found.setdefault(" ".join(words), where)
        return found

    def run_in_wine(self, lines):
        """The exit codes of commands, and what "zebdiag --help" prints."""
        program = pathlib.Path(sys.argv[1]).resolve()
        self.assertTrue(program.exists(), f"{program} has not been built")
        build = program.parents[1]
        file = build / "documented-commands.cmd"
        zebdiag = '"Z:' + str(program).replace("/", "\\") + '"'
        file.write_bytes((f"{zebdiag} --help\r\n" + "".join(
            f"{zebdiag}{line.removeprefix('zebdiag')} >nul 2>nul <nul\r\necho @{number} %errorlevel%\r\n"
            for number, line in enumerate(lines))).encode())
        # Into a file: what Wine starts beside the program would hold a pipe open.
        printed = build / "documented-commands.log"
        with open(printed, "wb") as log:
            subprocess.run([ROOT / "scripts/wine-run", build / "prefix-tests", "cmd.exe", "/q", "/c", file.name],
                           cwd=build, stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.DEVNULL, check=False)
        output = printed.read_text(encoding="utf-8", errors="replace")
        codes = {int(number): int(code) for number, code in re.findall(r"@(\d+) (\d+)", output)}
        self.assertEqual(len(lines), len(codes), output)
        return [codes[number] for number in range(len(lines))], output.partition("@0")[0]

    def test_are_understood(self):
        commands = self.whole_commands()
        # Prose may name a command that wants more than its name.
        named = {code: where for where, code in self.in_prose() if self.NAME.fullmatch(code)}
        self.assertGreater(len(commands), 15)
        self.assertGreater(len(named), 3)
        lines = ["zebdiag no-such-command", "zebdiag run --all --nonsense", *commands, *named]
        codes, help_text = self.run_in_wine(lines)
        refused = [line for line, code in zip(lines, codes, strict=True) if code >= NOT_UNDERSTOOD]
        self.assertEqual(lines[:2], refused[:2])
        self.assertEqual([], [(commands[line], line) for line in refused[2:] if line in commands])
        self.assertEqual([], [(named[line], line) for line in refused[2:] if line in named and
                              not re.search(rf"^\s*{self.NAME.fullmatch(line)[1]}\s", help_text, re.M)])


class Names(unittest.TestCase):
    PATH = re.compile(r"[\w.*-]+(/[\w.*-]+)+/?")
    FILE = re.compile(r"(?<![\w%\\*.-])[\w-]+\.(?:dll|exe|EXE|mof|cmd|vbs|bin|log|rc|inc|cpp|py|h)\b(?!\.)")
    # Files that somebody else makes or brings.
    FOREIGN_FILES = {"log.txt", "compiler.exe", "Program.exe", "cscript.exe", "FirewallAPI.dll"}

    def exists(self, page, path):
        path = path.rstrip("/")
        if path.startswith("build"):
            return True  # made when it is needed
        places = [path + suffix for suffix in ("", ".h", ".cpp")]
        if any(list(folder.glob(place)) for place in places for folder in (ROOT, page.path.parent)):
            return True
        return any(name.endswith("/" + place) for place in places for name in SOURCES) or \
            any(f"/{path}/" in name for name in SOURCES)

    def test_paths_exist(self):
        missing = [(page.name, code) for page in PAGES for code in page.code
                   if self.PATH.fullmatch(code) and not self.exists(page, code)]
        self.assertEqual([], missing)

    def test_files_are_named_in_the_sources(self):
        named = {(name, page.name) for page in PAGES
                 for text in page.code + [block.text for block in page.blocks if block.language != "output"]
                 for name in self.FILE.findall(text) if name not in self.FOREIGN_FILES}
        targets = set(re.findall(r"\bzeb_(?:test|string_library|agent_dll)\((\w+)", ALL_SOURCES))
        self.assertEqual([], sorted(
            (name, page) for name, page in named
            if name not in ALL_SOURCES and name.rpartition(".")[0] not in targets and
            not any(source.endswith("/" + name) for source in SOURCES)))

    def test_words_are_in_the_sources(self):
        named = {(code, page.name) for page in PAGES for code in page.code if re.fullmatch(r"[A-Za-z_]\w{3,}", code)}
        self.assertEqual([], sorted(one for one in named if one[0] not in WORDS | FOREIGN))
        self.assertEqual(set(), FOREIGN - {code for code, _ in named}, "words that no page uses")

    def test_targets_and_scripts_that_commands_name_exist(self):
        texts = [code for page in PAGES for code in page.code] + \
            [command.strip() for page in PAGES for block in page.blocks for command in block.commands()]
        targets = {match[1] for text in texts if (match := re.match(r"make ([a-z]+)", text))}
        self.assertIn("demo", targets)
        self.assertEqual([], [name for name in targets if not re.search(rf"^{name}:", SOURCES["Makefile"], re.M)])
        scripts = {match[0] for text in texts if (match := re.match(r"scripts/[\w-]+", text))}
        self.assertEqual([], [name for name in scripts if not (ROOT / name).exists()])

    def test_registry_keys_and_values_are_in_the_sources(self):
        plain = ALL_SOURCES.replace("\\\\", "\\")
        texts = [(page.name, text) for page in PAGES
                 for text in page.code + [block.text for block in page.blocks]]
        keys = {(name, key) for name, text in texts for key in re.findall(r"SOFTWARE\\Veltrane[\w\\]*\w", text)}
        self.assertGreater(len(keys), 3)
        self.assertEqual([], sorted((name, key) for name, key in keys if key not in plain))
        values = {(name, value) for name, text in texts
                  for value in re.findall(r"\breg (?:add|delete) .* /v (\w+)", text)}
        self.assertGreater(len(values), 3)
        self.assertEqual([], sorted((name, value) for name, value in values if value not in WORDS))

    def test_classes_are_in_the_schema(self):
        schema = SOURCES["resources/mof/zebdiag.mof"]
        named = {name for page in PAGES for text in [page.prose] + [block.text for block in page.blocks]
                 for name in re.findall(r"\bTolva_\w+", text)}
        self.assertEqual([], sorted(name for name in named if not re.search(rf"\bclass {name}\b", schema)))


class Operations(unittest.TestCase):
    READ = re.compile(r'\b(?:ReadNumber|ReadText|ReadRegistryNumber|ReadRegistryString|ReadTerminatedString|'
                      r'ReadNumberValue|ReadTextValue)\([^"\n;]*"(\w+)"|\{L"(\w+)", &CStampSettings::')

    def test_every_value_that_is_read_is_described(self):
        read = set()
        for name, text in SOURCES.items():
            if name.startswith(("CDM/", "Common/", "agent/host/")) and "/store/" not in name:
                read |= {"".join(found) for found in self.READ.findall(text)}
        self.assertEqual(read, set(BY_NAME["docs/operations.md"].first_cells("Registry values")))

    def test_texts_of_the_trace_are_in_the_sources(self):
        texts = [text for name, text in SOURCES.items() if name.startswith(("CDM/", "Common/"))]
        sources = "\n".join(texts).replace('\\"', '"')
        cells = BY_NAME["docs/operations.md"].first_cells("Troubleshooting")
        self.assertGreater(len(cells), 20)
        self.assertEqual([], [text for text in cells if text not in sources])


class Metrics(unittest.TestCase):
    ROW = re.compile(r'^    \{"(zeb_\w+)",', re.M)

    def test_those_that_are_written_are_described(self):
        written = self.ROW.findall(SOURCES["tools/zebdiag/metrics/MetricsDocument.cpp"])
        self.assertGreater(len(written), 15)
        self.assertEqual(sorted(written), sorted(BY_NAME["docs/metrics.md"].first_cells("Metrics of zebdiag")))

    def test_every_alert_is_described(self):
        alerts = re.findall(r"- alert: (\w+)", SOURCES["deploy/prometheus/zeb-rules.yml"])
        self.assertGreater(len(alerts), 3)
        self.assertEqual(alerts, BY_NAME["docs/fleet.md"].first_cells("Prometheus"))


class MadePages(unittest.TestCase):
    def test_schema_is_what_the_schema_makes(self):
        made = subprocess.run([ROOT / "scripts/schema-page", "--check"], stderr=subprocess.PIPE, check=False)
        self.assertEqual(0, made.returncode, made.stderr)

    def test_changelog_begins_with_this_version(self):
        version = re.search(r"project\(ZebDiagnostics VERSION ([\d.]+)", SOURCES["CMakeLists.txt"])[1]
        headings = [line for line in BY_NAME["CHANGELOG.md"].lines if line.startswith("## ")]
        self.assertTrue(headings[0].startswith(f"## {version}"), headings[0])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]], verbosity=1)
