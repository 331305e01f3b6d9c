"""Where small faults can be put into C++ sources: each site is one replacement in one file.

Nothing here knows C++ beyond brackets, literals and statements. Comments, preprocessor lines and static_asserts are
left out; a fault that does not compile is found out by the compiler."""

import re
from dataclasses import dataclass

OPEN, CLOSE = "([{", ")]}"


@dataclass(frozen=True)
class Site:
    file: str
    start: int
    end: int
    new: str
    kind: str

    def line(self, text):
        return text.count("\n", 0, self.start) + 1


def masked(text):
    """The text with everything that is no code replaced by blanks, and the places of its string literals."""
    out = list(text)
    strings = []
    tokens = re.compile(
        r"//[^\n]*|/\*.*?\*/|^[ \t]*#(?:[^\n\\]|\\.|\\\n)*"
        r"""|(?:u8|[LuU])?"(?:[^"\\\n]|\\.)*"|[LuU]?'(?:[^'\\\n]|\\.)+'""", re.S | re.M)
    for match in tokens.finditer(text):
        quoted = match.group().endswith('"') and not match.group().lstrip().startswith(("/", "#"))
        if quoted:
            strings.append(match.span())
        # A literal stays something that is no blank, so that it counts as an argument or an element.
        filler = '"' if quoted or match.group().endswith("'") else " "
        for i in range(*match.span()):
            out[i] = out[i] if out[i] == "\n" else filler
    code = "".join(out)
    for match in re.finditer(r"\bstatic_assert\s*\(", code):
        end = closing(code, match.end() - 1)
        strings = [span for span in strings if not match.start() <= span[0] < end]
        code = code[:match.start()] + re.sub(r"[^\n]", " ", code[match.start():end + 1]) + code[end + 1:]
    return code, strings


def closing(code, at):
    """The place of the bracket that closes the one at `at`."""
    depth = 0
    for i in range(at, len(code)):
        if code[i] in OPEN:
            depth += 1
        elif code[i] in CLOSE:
            depth -= 1
            if depth == 0:
                return i
    return len(code) - 1


def elements(code, at):
    """The spans of the elements of the braced list that opens at `at`, without the blanks around them."""
    end = closing(code, at)
    cuts, depth = [at], 0
    for i in range(at + 1, end):
        depth += (code[i] in OPEN) - (code[i] in CLOSE)
        if code[i] == "," and depth == 0:
            cuts.append(i)
    spans = []
    for start, stop in zip(cuts, cuts[1:] + [end]):
        inner = code[start + 1:stop]
        if inner.strip():
            left = start + 1 + len(inner) - len(inner.lstrip())
            spans.append((left, left + len(inner.strip())))
    return spans


def negated_conditions(file, text, code):
    for match in re.finditer(r"\bif\s*\(", code):
        end = closing(code, match.end() - 1)
        start = max(match.end(), code.rfind(";", match.end(), end) + 1)
        condition = text[start:end].strip()
        yield Site(file, start, end, f"!({condition})" if start == match.end() else f" !({condition})",
                   "negated condition")


OTHER_OPERATOR = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&"}


def changed_operators(file, text, code):
    for match in re.finditer(r"(?<= )(==|!=|<=|>=|<|>|&&|\|\|)(?=[ \n])", code):
        yield Site(file, *match.span(), OTHER_OPERATOR[match.group()], "changed operator")


OTHER_CONSTANT = {"true": "false", "false": "true", "TRUE": "FALSE", "FALSE": "TRUE", "S_OK": "S_FALSE",
                  "E_FAIL": "E_UNEXPECTED", "E_INVALIDARG": "E_UNEXPECTED", "E_POINTER": "E_UNEXPECTED"}


def changed_constants(file, text, code):
    for match in re.finditer(r"(?<![\w.'])(0[xX][0-9A-Fa-f]+|\d+)(?=[uUlL]*\b)(?![.'])", code):
        number = match.group()
        value = int(number, 0) + 1 if not re.fullmatch(r"0\d+", number) else int(number, 8) + 1
        yield Site(file, *match.span(), hex(value) if number[:2] in ("0x", "0X") else str(value), "changed constant")
    for match in re.finditer(r"\b(" + "|".join(OTHER_CONSTANT) + r")\b", code):
        yield Site(file, *match.span(), OTHER_CONSTANT[match.group()], "changed constant")
    for match in re.finditer(r"\b(wmi|engine)::([A-Z]\w+)", code):
        new = "wmi::Failed" if match.group() != "wmi::Failed" else "wmi::NotFound"
        yield Site(file, *match.span(), new, "changed constant")


def changed_texts(file, text, strings):
    for start, end in strings:
        # Between two letters, where no escape and no format is; tests that look for a part of a line see the middle.
        between = [match.start() + 1 for match in re.compile(r"[A-Za-z](?=[A-Za-z])").finditer(text, start + 2, end - 1)
                   if not re.search(r"[%\\]\w*$", text[start:match.start() + 1])]
        if between:
            at = between[len(between) // 2]
            yield Site(file, at, at, "~", "changed text")


def swapped_neighbours(file, text, code):
    for match in re.finditer(r"(=|:|\breturn\b)\s*\{", code):
        spans = elements(code, match.end() - 1)
        if any(code[start] == "." or ";" in code[start:end] for start, end in spans):
            continue
        for (a, b), (c, d) in zip(spans, spans[1:]):
            if text[a:b] != text[c:d]:
                yield Site(file, a, d, text[c:d] + text[b:c] + text[a:b], "swapped neighbours")


# A scope that traces its way in and out is there for what it writes. Locks are not dropped: only chance would show it.
CALL = re.compile(r"(?:\(void\)\s*)?[A-Za-z_](?:[\w:.]|->|\[\w+\])*\(|(?:const\s+)?CZebTrace\s+\w+\(")
NO_CALL = re.compile(r"(?:switch|return|throw|catch|sizeof|decltype|co_\w+|ZEB_\w+)\b")
HEAD = re.compile(r"\s*(?:else\s+)?(?:if|for|while)\s*(\()|\s*else\s|\s+")


def dropped_calls(file, text, code):
    for match in re.finditer(r"(?<=[;{})])[^;{}]*(?=;)", code):
        start, end = match.span()
        while head := HEAD.match(code, start, end):
            start = closing(code, head.start(1)) + 1 if head.group(1) else head.end()
        call = CALL.match(code, start, end)
        if not call or NO_CALL.match(code, start, end):
            continue
        last = closing(code, call.end() - 1)
        if last >= end: # the rest of a condition
            continue
        # What follows may be a member of what was returned, not a value that it is given.
        if code[end - 1] == ")" and "=" not in code[last:end]:
            yield Site(file, start, end, "", "dropped call")


def sites(file, text):
    code, strings = masked(text)
    found = [*negated_conditions(file, text, code), *changed_operators(file, text, code),
             *changed_constants(file, text, code), *changed_texts(file, text, strings),
             *swapped_neighbours(file, text, code), *dropped_calls(file, text, code)]
    return [site for site in found if text[site.start:site.end] != site.new]
