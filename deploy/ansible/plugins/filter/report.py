"""The rows of the report: what each host's answer says about each test, in words that a table can hold."""
import json
import re

TEXT_LIMIT = 500
# The gravest first. What is not a verdict of zebdiag (docs/json.md) is one of this collection: the machine has given
# no answer.
VERDICTS = ("unreachable", "timed_out", "no_document", "not_tried", "not_reachable", "failed", "could_not_run",
            "not_found", "busy", "stopped", "not_run", "passed")

# What people would take for something else.
WORDS = {"unreachable": "computer unreachable", "not_reachable": "provider unreachable",
         "no_document": "no answer of zebdiag"}


def _text(value):
    """One line without control characters, of a length that a table can hold."""
    text = " ".join(re.sub(r"[\x00-\x1f\x7f-\x9f\u2028\u2029]", " ", "" if value is None else str(value)).split())
    return text if len(text) <= TEXT_LIMIT else text[:TEXT_LIMIT - 1] + "\u2026"


def _verdict(value):
    return value if value in VERDICTS else "no_document"


def documents(text):
    """The JSON documents that stand one after the other in a text; ValueError if there is anything else."""
    decoder, found = json.JSONDecoder(), []
    text = text.strip().lstrip("\ufeff")
    while text:
        document, end = decoder.raw_decode(text)
        if not isinstance(document, dict):
            raise ValueError("not a document")
        found.append(document)
        text = text[end:].lstrip()
    if not found:
        raise ValueError("no document")
    return found


def _row(adapter="", test="", verdict="", detail=""):
    return {"adapter": _text(adapter), "test": _text(test), "verdict": _verdict(verdict), "detail": _text(detail)}


def _test_row(reference, verdict, detail):
    return _row(reference["adapter"]["name"], reference["caption"], verdict, detail)


def _run_row(run):
    findings = (run.get("result") or {}).get("findings") or []
    detail = " ".join(str(text) for text in [run.get("message"), *findings] if text)
    return _test_row(run["test"], run["outcome"], detail)


def _document_rows(document):
    error = document.get("error")
    if error:
        return [_row(verdict=document["verdict"],
                     detail=" ".join(str(error[part]) for part in ("cause", "nextStep") if error.get(part)))]
    rows = [_run_row(run) for run in document["runs"]]
    rows += [_test_row(reference, "not_run", "The series was stopped before.") for reference in document["notRun"]]
    return rows or [_row(verdict=document["verdict"], detail="No test was run.")]


def _silent_row(answer):
    """The one row of a host that has sent no document."""
    message = answer.get("msg", "")
    if answer.get("unreachable"):
        return _row(verdict="unreachable", detail=message)
    if "rc" not in answer:
        return _row(verdict="timed_out" if "time frame" in message or "timedout" in answer else "no_document",
                    detail=message)
    said = _text(answer.get("stderr") or answer.get("stdout"))
    return _row(verdict="no_document", detail=f"zebdiag has sent no document (exit code {answer['rc']}). {said}")


def rows(answer):
    """The rows of one host: adapter, test, verdict and detail. `answer` is the result of the raw task."""
    if not answer:
        return [_row(verdict="not_tried", detail="The play did not get as far as the tests.")]
    try:
        return [row for document in documents(answer.get("stdout", "")) for row in _document_rows(document)]
    except (ValueError, KeyError, TypeError, AttributeError, RecursionError):
        return [_silent_row(answer)]


def _gravest(found):
    return min((row["verdict"] for row in found), key=VERDICTS.index)


def host_reports(hosts, hostvars):
    """What the report says about each host, in the order of the inventory."""
    reports = []
    for host in hosts:
        found = rows(hostvars[host]["zeb_answer"] if "zeb_answer" in hostvars[host] else None)
        reports.append({"host": _text(host), "verdict": _gravest(found), "rows": found,
                        "passed": sum(row["verdict"] == "passed" for row in found)})
    return reports


def by_gravity(reports):
    """The hosts that need attention first."""
    return sorted(reports, key=lambda report: VERDICTS.index(report["verdict"]))


def counts(reports):
    """How many hosts there are of each verdict: a list of [verdict, number], the gravest first."""
    verdicts = [report["verdict"] for report in reports]
    return [[verdict, verdicts.count(verdict)] for verdict in VERDICTS if verdict in verdicts]


def counts_text(reports):
    """The same in one sentence."""
    total = f"{len(reports)} host{'' if len(reports) == 1 else 's'}: "
    return total + ", ".join(f"{number} {words(verdict)}" for verdict, number in counts(reports)) + "."


def words(verdict):
    """A verdict for people."""
    return WORDS.get(verdict, verdict.replace("_", " "))


def csv_line(fields):
    """One line of CSV. Spreadsheets take a field that begins with such a sign for a formula, so it gets an apostrophe
    in front."""
    def quoted(field):
        text = _text(field)
        if text[:1] in tuple("=+-@\uff1d\uff0b\uff0d\uff20"):
            text = "'" + text
        return '"' + text.replace('"', '""') + '"'
    return ",".join(quoted(field) for field in fields)


class FilterModule:
    """The filters of this file."""

    def filters(self):
        return {"host_reports": host_reports, "by_gravity": by_gravity, "counts": counts,
                "counts_text": counts_text, "words": words, "csv_line": csv_line}
