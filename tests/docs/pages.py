"""The Markdown pages of the project, taken apart: prose, code in it, blocks, links and the anchors of headings."""
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]

# What a block is, by the word behind its fence. In "console" the commands are the lines that begin with "> ", and all
# others are output; "output" has nothing else; "text" is neither.
COMMANDS = ("cmd", "bat", "sh", "powershell")
LANGUAGES = COMMANDS + ("console", "output", "text", "vbscript", "json", "cpp", "xml", "ini", "yaml")

FENCE = re.compile(r"^( *)```(.*)$")
HEADING = re.compile(r"^(#+) (.*?)#*$")
LINK = re.compile(r"\[[^\]]*\]\(([^()\s]+)\)")
CODE = re.compile(r"(`+)(.+?)\1", re.S)


class Block:
    def __init__(self, page, line, language):
        self.where = f"{page.relative_to(ROOT)}:{line}"
        self.language = language
        self.lines = []

    @property
    def text(self):
        return "\n".join(self.lines) + "\n"

    def commands(self):
        if self.language == "console":
            return [line[2:] for line in self.lines if line.startswith("> ")]
        return list(self.lines) if self.language in COMMANDS else []


class Page:
    def __init__(self, path):
        self.path = path
        self.name = str(path.relative_to(ROOT))
        self.blocks = []
        self.lines = []  # of the prose; lines of blocks are empty
        self._read()
        self.prose = "\n".join(self.lines)
        self.links = LINK.findall(CODE.sub("", self.prose))
        self.code = [" ".join(found.split()) for _, found in CODE.findall(self.prose)]

    def _read(self):
        block, indent = None, ""
        for number, line in enumerate(self.path.read_text(encoding="utf-8").splitlines(), 1):
            fence = FENCE.match(line)
            if block is not None:
                if fence and not fence[2]:
                    block = None
                else:
                    block.lines.append(line.removeprefix(indent))
            elif fence:
                indent = fence[1]
                block = Block(self.path, number, fence[2].strip())
                self.blocks.append(block)
            self.lines.append("" if block is not None or fence else line)

    def anchors(self):
        """The names that a reader on the web can jump to."""
        found = set()
        for line in self.lines:
            heading = HEADING.match(line)
            if not heading:
                continue
            text = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading[2]).strip().lower()
            name = re.sub(r"[^\w\- ]", "", text).replace(" ", "-")
            count = 0
            while (one := f"{name}-{count}" if count else name) in found:
                count += 1
            found.add(one)
        return found

    def section(self, title):
        """The lines of the prose below a heading, up to the next one of its rank."""
        lines = []
        rank = 0
        for line in self.lines:
            heading = HEADING.match(line)
            if heading and rank and len(heading[1]) <= rank:
                break
            if rank:
                lines.append(line)
            elif heading and heading[2].strip() == title:
                rank = len(heading[1])
        return lines

    def first_cells(self, title):
        """The code in the first column of the tables of a section."""
        found = []
        for line in self.section(title):
            if line.startswith("|"):
                found += [code for _, code in CODE.findall(line.split("|")[1])]
        return found


def project_files():
    for top in sorted(ROOT.iterdir()):
        if not top.name.startswith((".", "build")):
            yield from sorted(path for path in ([top] if top.is_file() else top.rglob("*")) if path.is_file())


def all_pages():
    return [Page(path) for path in project_files() if path.suffix == ".md"]
