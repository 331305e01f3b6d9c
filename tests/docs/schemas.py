"""The schemas of the JSON documents (docs/json), and the validator that is used on them, which is not ours."""
import json

from jsonschema import Draft202012Validator, RefResolver
from pages import ROOT

FOLDER = ROOT / "docs/json"
PARTS = "urn:zebdiag:json:parts"

ALL = {path.name: json.loads(path.read_text(encoding="utf-8")) for path in sorted(FOLDER.glob("*.schema.json"))}
_STORE = {schema["$id"]: schema for schema in ALL.values()}
# Those that a document can be of.
KINDS = {name: schema for name, schema in ALL.items() if schema["$id"] != PARTS}


def commands_of(schema):
    """The commands that print such a document; None is that of a document that no command prints."""
    command = schema["properties"].get("command", {"const": None})
    return [command["const"]] if "const" in command else command["enum"]


def reports_error(schema):
    return "error" in schema["properties"]


def kinds():
    """Every kind of document: the schema's file and the command, which for errors makes no difference."""
    return {(name, None if reports_error(schema) else command)
            for name, schema in KINDS.items() for command in commands_of(schema)}


def kind_of(document):
    """The kind that a document is meant to be of; None if there is no such kind."""
    command, error = document.get("command"), "error" in document
    for name, schema in KINDS.items():
        if reports_error(schema) == error and command in commands_of(schema):
            return name, None if error else command
    return None


def errors_in(document, name):
    """What is wrong, as (place, message), the inner reasons of a choice included."""
    schema = ALL[name]
    validator = Draft202012Validator(schema, resolver=RefResolver(schema["$id"], schema, store=_STORE))
    found, errors = [], list(validator.iter_errors(document))
    while errors:
        error = errors.pop(0)
        found.append((error.json_path, error.message))
        errors += error.context
    return found
