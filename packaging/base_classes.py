"""The base classes of the Common Diagnostic Model as MOF files of their own, one class each.

Windows has these classes; a system that lacks one gets it. A compiler that may only create ends at the first class that
is there already, so that each class needs a file. They are compiled in the order of their numbers.
"""
import re

NAMES = ("CIM_DiagnosticTest", "CIM_DiagnosticResult", "CIM_DiagnosticSetting", "CIM_DiagnosticTestForMSE",
         "CIM_DiagnosticSettingForTest", "CIM_DiagnosticResultForMSE", "CIM_DiagnosticResultForTest")

HEAD = """// A base class of the Common Diagnostic Model, for systems that lack it. Where it is there, it stays as it
// is, and the compiler says so. Removing ZEB Diagnostics leaves it: other software may have built on it.
#pragma autorecover
#pragma classflags("createonly")
#pragma namespace("\\\\\\\\.\\\\root\\\\cimv2")

"""


def base_class_files(classes):
    """The files' names and texts, from a MOF text that has these classes among others."""
    files = []
    for number, name in enumerate(NAMES, 1):
        found = re.search(r"^\[(?:(?!^\[).)*?^class %s\b.*?^\};\n" % name, classes, re.MULTILINE | re.DOTALL)
        if not found:
            raise SystemExit(f"there is no class {name}")
        files.append((f"{number}-{name}.mof", HEAD + found[0]))
    return files
