#!/usr/bin/env python3
"""The page of "zebdiag report" in a browser: the adapters are scripted, the program and the browser are real.

usage: page_test.py [TEST ...]

The pictures are in build/page-test, for whoever wants to look at them.
"""
import itertools
import json
import pathlib
import shutil
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests/system/package"), str(ROOT / "tests/deploy")]
from browser import Browser  # noqa: E402
from machine import BIN, Machine  # noqa: E402

WORK = ROOT / "build/page-test"
PAGE, GERMAN = WORK / "report.html", WORK / "german.html"
SCRIPT = r"HKLM\SOFTWARE\Veltrane\Halvern\ZEB\VorlTest"
SETTINGS = r"HKLM\SOFTWARE\Veltrane\Halvern\ZEB\ZebDiag"
# The provider folds keys to upper case, which is the same to a browser.
NASTY = "<SCRIPT>ALERT(1)</SCRIPT>"
LONG = "ADAPTER-" + "WITHOUT-A-BREAK" * 8
NARROW, WIDE = 360, 1280
LOST = {"Counter": [190, 190, 200, 10, 185, 5, 1, 0], "Word": 12, "ByteA": 1, "ByteB": 1}
LARGEST = {"Counter": [4294967295, 4294967295, 4294967295, 0, 4294967294, 1, 0, 240], "ByteA": 1, "ByteB": 1}
ADAPTERS = [
    {"Key": "OFFICE-LAN",
     "Tests": [{"TestID": 1}, {"TestID": 2, "Outcome": "0x80040323"}, {"TestID": 3, "Outcome": "0x80040333"},
               {"TestID": 4}, {"TestID": 5}, {"TestID": 6, "Outcome": "0x80040362"}, {"TestID": 7}, {"TestID": 8},
               {"TestID": 9, "Statistics": [LOST]}, {"TestID": 10}]},
    {"Key": NASTY, "Tests": [{"TestID": 1, "Outcome": "0x80040311"}, {"TestID": 9, "Statistics": [LARGEST]}]},
    {"Key": LONG, "Tests": [{"TestID": 1}, {"TestID": 9, "Statistics": [{"Counter": [0]}]}]},
]

# For each text that is seen, its own colour, the size and weight of its letters, and the colours behind it from the
# nearest to the farthest.
TEXTS = """
const found = [];
for (const element of document.body.querySelectorAll('*')) {
  const own = [...element.childNodes].some(node => node.nodeType === Node.TEXT_NODE && node.data.trim());
  if (!own || !element.getClientRects().length) continue;
  const style = getComputedStyle(element), behind = [];
  for (let at = element; at; at = at.parentElement) behind.push(getComputedStyle(at).backgroundColor);
  found.push({text: element.textContent.trim().slice(0, 60), color: style.color, behind,
              size: parseFloat(style.fontSize), weight: parseInt(style.fontWeight)});
}
return found;
"""
# The elements of which a part is outside the window, or outside their own box where that hides it.
CUT_OFF = """
return [...document.body.querySelectorAll('*')].filter(element => {
  const box = element.getBoundingClientRect(), style = getComputedStyle(element);
  const hides = style.display !== 'inline' && element.clientWidth && element.scrollWidth > element.clientWidth + 1;
  return box.width && (box.left < -0.5 || box.right > innerWidth + 0.5 || hides);
}).map(element => element.tagName + ' ' + element.textContent.trim().slice(0, 60));
"""

# The words of ordinary length that do not stand on one line.
TORN = """
const torn = [], walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT), range = document.createRange();
for (let node = walker.nextNode(); node; node = walker.nextNode())
  for (const word of node.data.matchAll(/(?<!\\S)[\\p{L}\\d]{1,20}[.,:]?(?!\\S)/gu)) {
    range.setStart(node, word.index);
    range.setEnd(node, word.index + word[0].length);
    if (new Set([...range.getClientRects()].map(box => box.top)).size > 1) torn.push(word[0]);
  }
return torn;
"""


def colour(text):
    """(red, green, blue, opacity) of 'rgb(1, 2, 3)' or 'rgba(1, 2, 3, 0.5)'."""
    parts = [float(part) for part in text[text.index("(") + 1:-1].split(",")]
    return (*parts[:3], parts[3] if len(parts) > 3 else 1.0)


def over(front, back):
    return tuple(f * front[3] + b * (1 - front[3]) for f, b in zip(front[:3], back)) + (1.0,)


def luminance(rgb):
    linear = [c / 255 / 12.92 if c / 255 <= 0.04045 else ((c / 255 + 0.055) / 1.055) ** 2.4 for c in rgb[:3]]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def contrast(first, second):
    light, dark = sorted((luminance(first), luminance(second)), reverse=True)
    return (light + 0.05) / (dark + 0.05)


def weak_texts(texts):
    """The texts that are too faint, by the Web Content Accessibility Guidelines (AA)."""
    weak = []
    for text in texts:
        back = (255.0, 255.0, 255.0, 1.0)
        for layer in reversed(text["behind"]):
            back = over(colour(layer), back)
        large = text["size"] >= 24 or (text["size"] >= 18.66 and text["weight"] >= 700)
        ratio = contrast(over(colour(text["color"]), back), back)
        if ratio < (3 if large else 4.5):
            weak.append((text["text"], text["color"], round(ratio, 2)))
    return weak


def make_report():
    """A machine of its own, with results of all kinds, and what the program reports of it."""
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    (WORK / "script.json").write_text(json.dumps({"Adapters": ADAPTERS}), encoding="utf-8")
    prefix = WORK / "prefix"
    subprocess.run([ROOT / "scripts/register", prefix], check=True, stdout=subprocess.DEVNULL)
    machine = Machine(prefix)
    machine.hold()
    try:
        machine.set_value(SCRIPT, "Script", "Z:" + str(WORK / "script.json").replace("/", "\\"))
        machine.set_value(r"HKLM\SOFTWARE\Veltrane\Halvern\ZEB\WMI\Providers", "TestVorl", 1)
        machine.set_value(SETTINGS, "CheckTime", 1)
        machine.set_value(SETTINGS, "TimeoutSndRsp", 2)
        machine.set_value(r"HKLM\SOFTWARE\WMI stand-in", "IdleMilliseconds", 600000)
        for arguments, code in (("run --all", 1), ("run --test sender", 0), ("run --test responder --timeout 1", 2),
                                ("report --html report.html --json report.json --locale en-US", 0),
                                ("report --html german.html --locale de-DE", 0)):
            done, output = machine.wine(BIN / "zebdiag.exe", *arguments.split(), fails=True)
            assert done == code, f"{arguments}: {done}\n{output}"
        for name in ("report.html", "report.json", "german.html"):
            shutil.copyfile(machine.drive / name, WORK / name)
    finally:
        machine.stop()


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        make_report()
        cls.browser = cls.enterClassContext(Browser(WORK / "profile"))

    @classmethod
    def tearDownClass(cls):
        for name, page, width, scheme in (("wide", PAGE, WIDE, "light"), ("narrow", PAGE, NARROW, "light"),
                                          ("dark", PAGE, WIDE, "dark"), ("german", GERMAN, NARROW, "light")):
            cls.browser.show(page, width, scheme)
            cls.browser.picture(WORK / f"{name}.png")

    def setUp(self):
        self.browser.console()
        self.browser.requests()

    def test_nothing_is_fetched_and_nothing_goes_wrong(self):
        for scheme in ("light", "dark"):
            self.browser.show(PAGE, scheme=scheme)
        self.assertEqual([], self.browser.console())
        self.assertEqual({PAGE.resolve().as_uri()}, set(self.browser.requests()))

    def test_a_page_that_fetches_or_fails_is_noticed(self):
        bad = WORK / "bad.html"
        bad.write_text("<!DOCTYPE html><img src='missing.png'><script>console.error('bad')</script>", encoding="utf-8")
        self.browser.show(bad)
        self.assertIn((WORK / "missing.png").resolve().as_uri(), self.browser.requests())
        self.assertTrue(any("bad" in line for line in self.browser.console()))

    def test_a_name_that_looks_like_a_script_is_text(self):
        self.browser.show(PAGE)
        self.assertEqual(0, self.browser.run("return document.scripts.length"))
        self.assertIn(NASTY, self.browser.run("return [...document.querySelectorAll('h2')].map(e => e.textContent)"))

    def test_every_result_of_the_document_is_on_the_page(self):
        self.browser.show(PAGE)
        document = json.loads((WORK / "report.json").read_text(encoding="utf-8"))
        text = self.browser.run("return document.body.textContent")
        shown = [text for adapter in document["adapters"] for test in adapter["tests"]
                 for text in (adapter["name"], test["caption"], test["description"],
                              *((test["result"] or {}).get("findings", ()) if not test["counters"] else
                                (counter["name"] for counter in test["counters"])))]
        self.assertGreater(len(shown), 60)
        self.assertEqual([], [part for part in shown if part not in text])
        self.assertEqual(14, self.browser.run("return document.querySelectorAll('article').length"))
        self.assertEqual(4, self.browser.run("return document.querySelectorAll('.bars').length"))

    def test_texts_can_be_read_dark_and_light(self):
        for scheme in ("light", "dark"):
            with self.subTest(scheme):
                self.browser.show(PAGE, scheme=scheme)
                texts = self.browser.run(TEXTS)
                self.assertGreater(len(texts), 100)
                self.assertEqual([], weak_texts(texts))

    def test_dark_and_light_differ(self):
        grounds = []
        for scheme in ("light", "dark"):
            self.browser.show(PAGE, scheme=scheme)
            grounds.append(colour(self.browser.run("return getComputedStyle(document.body).backgroundColor")))
        self.assertGreater(luminance(grounds[0]), 0.8)
        self.assertLess(luminance(grounds[1]), 0.05)

    def test_faint_text_is_noticed(self):
        text = {"text": "x", "size": 16, "weight": 400, "behind": ["rgba(0, 0, 0, 0)", "rgb(255, 255, 255)"]}
        self.assertEqual([("x", "rgb(130, 130, 130)", 3.84)], weak_texts([{**text, "color": "rgb(130, 130, 130)"}]))
        self.assertEqual([], weak_texts([{**text, "color": "rgb(110, 110, 110)"}]))
        self.assertEqual([], weak_texts([{**text, "color": "rgb(130, 130, 130)", "size": 24}]))

    def test_nothing_is_cut_off(self):
        for page, width in itertools.product((PAGE, GERMAN), (NARROW, WIDE)):
            with self.subTest(page=page.name, width=width):
                self.browser.show(page, width)
                self.assertEqual(width, self.browser.run("return innerWidth"))
                self.assertTrue(self.browser.run("return document.documentElement.scrollWidth <= document.documentElement.clientWidth"))
                self.assertEqual([], self.browser.run(CUT_OFF))
                self.assertEqual([], self.browser.run(TORN))

    def test_what_is_cut_off_is_noticed(self):
        self.browser.show(PAGE, NARROW)
        self.browser.run("document.querySelector('h2').style.whiteSpace = 'nowrap';"
                         "document.querySelector('h2').textContent = 'x'.repeat(200)")
        self.assertTrue(any(line.startswith("H2 xxx") for line in self.browser.run(CUT_OFF)))

    def test_german_is_called_german(self):
        self.browser.show(GERMAN)
        self.assertEqual("de", self.browser.run("return document.documentElement.lang"))
        self.assertEqual("Diagnosebericht", self.browser.run("return document.title").split()[0])
        self.assertIn("Einstellungen", self.browser.run("return document.body.textContent"))

    def test_torn_words_are_noticed(self):
        self.browser.show(PAGE, NARROW)
        self.browser.run("document.querySelector('h2').style.width = '3em';"
                         "document.querySelector('h2').textContent = 'is unbelievable'")
        self.assertEqual(["unbelievable"], self.browser.run(TORN))

    def test_everything_has_a_name(self):
        self.browser.show(PAGE)
        self.assertEqual("en", self.browser.run("return document.documentElement.lang"))
        named = ("RootWebArea", "heading", "link", "region", "article", "img", "image", "table", "columnheader",
                 "rowheader", "graphics-document", "SvgRoot")
        nodes = self.browser.accessible()
        self.assertEqual([], [node for node in nodes if node[0] in named and not node[1].strip()])
        roles = [role for role, _ in nodes]
        self.assertEqual(14, roles.count("article"))
        self.assertIn(("region", "OFFICE-LAN"), nodes)
        self.assertIn(("article", "2Negotiated speed and duplex"),
                      [(role, name.replace(" ", "", 1)) for role, name in nodes])
        # The pictures stand beside words that say the same.
        self.assertEqual(0, self.browser.run("return document.querySelectorAll('svg:not([aria-hidden])').length"))
        self.assertEqual([], self.browser.run(
            "const seen = new Set(); return [...document.querySelectorAll('[id]')].map(e => e.id)"
            ".filter(id => seen.has(id) || !seen.add(id))"))

    def test_links_lead_to_the_failed_tests(self):
        self.browser.show(PAGE)
        targets = self.browser.run("return [...document.querySelectorAll('a')].map("
                                   "a => document.querySelector(a.getAttribute('href')).className)")
        self.assertEqual(["test failed"] * 4, targets)

    def test_paper_is_light_and_holds_everything(self):
        self.browser.show(PAGE, scheme="dark", media="print")
        ground = colour(self.browser.run("return getComputedStyle(document.body).backgroundColor"))
        self.assertEqual(1, luminance(ground))
        self.assertEqual([], weak_texts(self.browser.run(TEXTS)))
        self.browser.print(WORK / "report.pdf")
        text = subprocess.run(["pdftotext", "-layout", WORK / "report.pdf", "-"], check=True,
                              capture_output=True).stdout.decode()
        for part in ("OFFICE-LAN", NASTY, "Negotiated speed and duplex", "4294967295"):
            self.assertIn(part, text)


if __name__ == "__main__":
    unittest.main(verbosity=2)
