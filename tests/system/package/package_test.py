#!/usr/bin/env python3
"""The installation package, as the system's installer runs it: what is there before and after, in registry and files.

usage: package_test.py FILES VERSION     (the list of what ships, and its version)

Wine's installer differs from Windows' own in three points, of which only the package's rows are looked at: it sets no
permissions on folders; it overwrites the values of a component that is never to be overwritten; and when an upgrade
fails, it removes what was installed without bringing the old files back, so a failing step is tried with a first
installation.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest
import zipfile

import older
from machine import ROOT, Machine

sys.path.insert(0, str(ROOT / "packaging"))
import symbols

LISTED, VERSION = sys.argv[1:3]
# As long as the version, because it replaces it in the programs.
OLDER = re.sub(r"^\d\.(\d+)\.(\d+)$", lambda parts: f"0.{'9' * len(parts[1])}.{'0' * len(parts[2])}", VERSION)
WORK = ROOT / "build/package-test"
PROGRAMS = "Program Files/Veltrane/ZEB"
DATA = "ProgramData/Veltrane/ZEB"
SETTINGS = r"HKLM\SOFTWARE\Veltrane\Halvern\ZEB\ZebDiag"
SETTINGS_KEY = SETTINGS.lower().removeprefix("hklm\\")
ZEBDIAG = rf"C:\{PROGRAMS}\zebdiag.exe".replace("/", "\\")
RUN = ("run", "--adapter", "SCRIPTED-ADAPTER-1", "--test", "1")
MISSING_CLASSES = ("CIM_DiagnosticResultForTest", "CIM_DiagnosticResultForMSE")
COMPILER = r"MOFCOMP=C:\standin\mofcomp.cmd"


def make_package(listed, version, output, **environment):
    subprocess.run([sys.executable, ROOT / "packaging/package.py", "--files", listed, "--version", version,
                    "--output", output], check=True, stdout=subprocess.DEVNULL,
                   env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000", "SIGN": "", **environment})
    return output / f"zeb-{version}-x64.msi", output / f"zeb-{version}-x64.zip"


def export(package, table):
    text = subprocess.run(["msiinfo", "export", package, table], check=True, capture_output=True).stdout.decode()
    return [line.split("\t") for line in text.replace("\r\n", "\n").split("\n")[3:] if line]


class Package(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        shutil.rmtree(WORK, ignore_errors=True)
        cls.msi, cls.zip = make_package(LISTED, VERSION, WORK / "first")
        older_files = older.write_list(LISTED, VERSION, OLDER, WORK / "older-parts")
        cls.older_msi, _ = make_package(older_files, OLDER, WORK / "older")
        cls.machine = cls.enterClassContext(Machine(ROOT / "build/prefix-package"))
        cls.machine.set_up_service(without_classes=MISSING_CLASSES)
        cls.given = cls.machine.drive / "given"
        cls.given.mkdir()
        shutil.copyfile(cls.msi, cls.given / "zeb.msi")
        shutil.copyfile(cls.older_msi, cls.given / "older.msi")
        with zipfile.ZipFile(cls.zip) as archive:
            archive.extractall(cls.given / "zip")
        cls.shipped = sorted(path.relative_to(cls.given / "zip").as_posix()
                             for path in (cls.given / "zip").rglob("*") if path.is_file())
        # The schema's texts in other languages, and their removal. The stand-in's compiler knows of one language only
        # and refuses them, which must not hold anything up.
        cls.texts = {name: re.sub(r"-(.*)\.mfl", r"-remove-\1.mof", name)
                     for name in cls.shipped if name.endswith(".mfl")}
        cls.files_before = cls.machine.files()
        cls.registry_before = cls.machine.registry()

    def install(self, *arguments, fails=False):
        return self.machine.wine("msiexec", *arguments, "/qn", "/l*v", r"C:\given\log.txt", fails=fails)[0]

    def installed_files(self):
        """What was added to the disk."""
        return {name: data for name, data in self.machine.files().items() if name not in self.files_before}

    def added_registry(self):
        return {key: values for key, values in self.machine.registry().items()
                if values != self.registry_before.get(key)}

    def zebdiag(self, *arguments):
        return self.machine.wine(ZEBDIAG, *arguments)[1]

    # The packages alone

    def test_01_two_builds_are_the_same(self):
        make_package(LISTED, VERSION, WORK / "second", TZ="Pacific/Chatham")
        for name in (f"zeb-{VERSION}-x64.msi", f"zeb-{VERSION}-x64.zip", f"zeb-{VERSION}-x64-symbols.zip"):
            self.assertEqual((WORK / "first" / name).read_bytes(), (WORK / "second" / name).read_bytes(), name)

    def test_02_programs_are_small_and_their_symbols_apart(self):
        with zipfile.ZipFile(self.zip) as archive:
            sizes = {entry.filename: entry.file_size for entry in archive.infolist()}
        with zipfile.ZipFile(WORK / "first" / f"zeb-{VERSION}-x64-symbols.zip") as archive:
            symbols = set(archive.namelist())
        self.assertLess(sizes["Drevok.EXE"], 700_000)
        self.assertLess(sizes["zebdiag.exe"], 1_600_000)
        binaries = {name for name in sizes if name.lower().endswith((".exe", ".dll"))}
        self.assertEqual({name + ".debug" for name in binaries}, symbols)

    def test_02_symbols_tell_the_lines_of_functions(self):
        """What ships is built with them elsewhere; here, a small program is. Without them it has to be noticed."""
        source = WORK / "small.cpp"
        source.write_text("#include <cwchar>\n\nint wmain()\n{\n    return 0;\n}\n", encoding="utf-8")
        stripped = []
        for name, options in (("with", ["-g1", f"-ffile-prefix-map={WORK}=/zeb"]), ("without", [])):
            program, apart = WORK / f"{name}.exe", WORK / f"{name}.exe.debug"
            subprocess.run(["x86_64-w64-mingw32-g++-posix", "-municode", *options, source, "-o", program], check=True)
            symbols.split(program, apart)
            stripped.append(program.stat().st_size)
            told = symbols.lines_of(apart, ["wmain"])
            self.assertEqual({"wmain": "/zeb/small.cpp:4" if options else "small.cpp:?"}, told)
            if options:
                symbols.require_lines(apart)
            else:
                self.assertRaises(SystemExit, symbols.require_lines, apart)
        self.assertEqual(stripped[0], stripped[1])

    def test_03_every_program_and_library_tells_its_version(self):
        told = {row[2]: row[4] for row in export(self.msi, "File")}
        for name in self.shipped:
            if name.lower().endswith((".exe", ".dll")):
                data = (self.given / "zip" / name).read_bytes()
                for text in ("ProductName\0", "ZEB Diagnostics\0", "FileDescription\0", f"{VERSION}\0"):
                    self.assertIn(text.encode("utf-16-le"), data, name)
                self.assertEqual(f"{VERSION}.0", told[name])

    def test_04_it_can_be_signed(self):
        key, certificate = WORK / "key.pem", WORK / "certificate.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=Self-made",
                        "-days", "30", "-addext", "extendedKeyUsage=codeSigning", "-keyout", key, "-out", certificate],
                       check=True, capture_output=True)
        signed, archive = make_package(LISTED, VERSION, WORK / "signed", SIGN=f"-certs {certificate} -key {key}")
        with zipfile.ZipFile(archive) as files:
            files.extract("Drevok.EXE", WORK / "signed")
            files.extract("ENU_8023.dll", WORK / "signed")
        for file in (signed, WORK / "signed/Drevok.EXE", WORK / "signed/ENU_8023.dll"):
            verified = subprocess.run(["osslsigncode", "verify", "-CAfile", certificate, "-in", file],
                                      capture_output=True, text=True, check=False)
            self.assertEqual(0, verified.returncode, verified.stdout + verified.stderr)
        unsigned = subprocess.run(["osslsigncode", "verify", "-CAfile", certificate, "-in", self.msi],
                                  capture_output=True, check=False)
        self.assertNotEqual(0, unsigned.returncode)

    def test_05_the_data_folder_has_permissions(self):
        permissions = "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1301bf;;;LS)(A;OICI;0x1200a9;;;BU)"
        self.assertEqual([["DataFolder", "DataFolder", "CreateFolder", permissions, ""]],
                         export(self.msi, "MsiLockPermissionsEx"))

    def test_06_settings_are_never_overwritten(self):
        rows = {row[0]: row for row in export(self.msi, "Component")}
        self.assertEqual(128, int(rows["Settings"][3]) & 128)
        self.assertEqual("InstalledDir", rows["Settings"][5])

    def test_07_taking_back_comes_in_the_right_order(self):
        place = {row[0]: int(row[2]) for row in export(self.msi, "InstallExecuteSequence")}
        # Taken back in reverse: the old schema is compiled when the old files are there again.
        self.assertLess(place["InstallInitialize"], place["SchemaComesBack"])
        self.assertLess(place["SchemaComesBack"], min(place["RemoveFiles"], place["InstallFiles"]))
        self.assertLess(max(place["InstallFiles"], place["WriteRegistryValues"]), place["SchemaGoesAgain"])
        self.assertLess(place["SchemaGoesAgain"], place["CompileSchema"])
        # Texts of other languages are there no longer than the schema.
        for number in range(1, len(self.texts) + 1):
            order = [place[name if "Schema" in name else f"{name}{number}"]
                     for name in ("TextsComeBack", "SchemaComesBack", "RemoveTexts", "RemoveSchema", "TextsGoAgain",
                                  "SchemaGoesAgain", "CompileSchema", "CompileTexts")]
            self.assertEqual(sorted(order), order)
        # The schema goes while the compiler's file is still there.
        self.assertLess(place["RemoveSchema"], place["RemoveFiles"])
        # An older version goes at the end, within what is taken back.
        self.assertLess(place["InstallExecute"], place["RemoveExistingProducts"])
        self.assertLess(place["RemoveExistingProducts"], place["InstallFinalize"])

    # A first installation

    def test_11_a_step_that_fails_leaves_nothing(self):
        (self.machine.standin / "fails.cmd").write_text("@exit /b 3\r\n", encoding="ascii")
        self.assertNotEqual(0, self.install("/i", r"C:\given\zeb.msi", r"MOFCOMP=C:\standin\fails.cmd", fails=True))
        self.assertEqual({}, self.installed_files())
        self.assertEqual(self.registry_before, self.machine.registry())

    def test_12_it_registers_what_the_programs_register_themselves(self):
        self.machine.wine(r"C:\given\zip\Drevok.EXE", "/RegServer")
        self.machine.wine("regsvr32", "/s", r"C:\given\zip\Vorl.dll")
        own = self.added_registry()
        self.machine.wine("regsvr32", "/s", "/u", r"C:\given\zip\Vorl.dll")
        self.machine.wine(r"C:\given\zip\Drevok.EXE", "/UnregServer")
        self.assertEqual(self.registry_before, self.machine.registry())

        self.install("/i", r"C:\given\zeb.msi", COMPILER)
        package = {key: values for key, values in self.added_registry().items() if r"\classes" in key}
        application = package[r"software\classes\appid\{6c1f0a52-3b7e-4e1b-9a55-0d6b7a3c8e21}"]
        self.assertEqual('"NT AUTHORITY\\\\LocalService"', application.pop("runas"))
        self.assertTrue(application.pop("launchpermission").startswith("hex:01,00,04,80,"))
        # The folder is another one, the provider's path has quotation marks, and the installer ends a folder with a
        # backslash.
        folder = r"C:\given\zip".replace("\\", "\\\\")
        programs = ("C:/" + PROGRAMS).replace("/", "\\\\")
        own = {key: {name: value.replace(folder, programs) for name, value in values.items()}
               for key, values in own.items()}
        server = own[r"software\classes\clsid\{6c1f0a52-3b7e-4e1b-9a55-0d6b7a3c8e20}\localserver32"]
        server["@"] = f'"\\"{programs}\\\\Drevok.EXE\\""'
        own[r"software\classes\typelib\{6c1f0a52-3b7e-4e1b-9a55-0d6b7a3c8e22}\1.0\helpdir"]["@"] = (
            f'"{programs}\\\\"')
        self.assertEqual(own, package)

    def test_13_its_files_are_those_of_the_zip(self):
        expected = {f"{PROGRAMS}/{name}": (self.given / "zip" / name).read_bytes()
                    for name in self.shipped if name not in ("install.cmd", "remove.cmd")}
        folders = ["Program Files/Veltrane", PROGRAMS, PROGRAMS + "/base", PROGRAMS + "/docs",
                   "ProgramData/Veltrane", DATA]
        self.assertEqual({**expected, **dict.fromkeys(folders)}, self.installed_files())

    def test_14_base_classes_that_are_there_are_refused(self):
        compiled = self.machine.compiled()
        self.assertIn("zebdiag-de.mfl", self.texts)
        for name in reversed(self.texts):
            self.assertEqual((name, True), compiled.pop())
        self.assertEqual(("zebdiag.mof", False), compiled.pop())
        self.assertEqual(7, len(compiled))
        for name, refused in compiled:
            self.assertEqual(name.split("-")[1].removesuffix(".mof") not in MISSING_CLASSES, refused, name)

    def test_15_the_doctor_finds_nothing(self):
        report = self.zebdiag("doctor")
        self.assertIn("runs as NT AUTHORITY\\LocalService", report)
        # In the words of the system, which has read the descriptor.
        self.assertIn("D:(A;;CCDCSW;;;BA)(A;;CCDCSW;;;SY)(A;;CCDCSW;;;LS)(A;;CCDCSW;;;NS)", "".join(report.split()))

    def test_16_tests_are_listed_and_run(self):
        self.assertIn("Link", self.zebdiag("list"))
        self.assertIn("PASSED", self.zebdiag(*RUN))

    def test_19_removal_leaves_results(self):
        self.install("/x", r"C:\given\zeb.msi", COMPILER)
        self.assertEqual([*((name, True) for name in self.texts.values()), ("zebdiag-remove.mof", False)],
                         self.machine.compiled())
        self.assertEqual(["ProgramData/Veltrane", DATA, DATA + "/ZebDiag.bin"], sorted(self.installed_files()))
        self.assertEqual(self.registry_before, self.machine.registry())

    def test_20_the_system_s_compiler_is_used_where_there_is_one(self):
        def asked_for_compiler():
            log = (self.given / "log.txt").read_bytes().replace(b"\0", b"")
            self.assertIn(b"InstallFinalize. Return value 1", log)
            return b"CompileSchema. Return value 1" in log

        # Wine has one that does nothing.
        self.install("/i", r"C:\given\zeb.msi")
        self.assertTrue(asked_for_compiler())
        (self.machine.drive / "windows/system32/wbem/mofcomp.exe").unlink()
        self.install("/i", r"C:\given\zeb.msi", "REINSTALL=ALL", "REINSTALLMODE=omus")
        self.assertFalse(asked_for_compiler())
        self.install("/x", r"C:\given\zeb.msi")

    # An older version, upgraded, repaired and removed

    def test_21_an_upgrade_keeps_results_log_and_settings(self):
        shutil.rmtree(self.machine.drive / "ProgramData/Veltrane", ignore_errors=True)
        self.install("/i", r"C:\given\older.msi", COMPILER)
        self.assertIn(f"{PROGRAMS}/{older.GONE}", self.installed_files())
        self.machine.set_value(SETTINGS, "Enable", 1)
        self.machine.set_value(SETTINGS, "MaxFileSize", 10000)
        settings = self.machine.registry()[SETTINGS_KEY]
        self.zebdiag(*RUN)
        kept = {name: data for name, data in self.installed_files().items() if name.startswith(DATA + "/")}
        self.assertEqual({DATA + "/ZebDiag.bin", DATA + "/ZebDiag.log"}, set(kept))
        results = self.zebdiag("results")
        self.machine.compiled()

        self.install("/i", r"C:\given\zeb.msi", COMPILER)
        self.assertFalse({"zebdiag-remove.mof", *self.texts.values()} & {name for name, _ in self.machine.compiled()})
        now, registry = self.installed_files(), self.machine.registry()
        self.assertEqual(kept, {name: now.get(name) for name in kept})
        self.assertEqual(settings, registry[SETTINGS_KEY])
        self.assertNotIn(f"{PROGRAMS}/{older.GONE}", now)
        for name in self.shipped:
            if name not in ("install.cmd", "remove.cmd"):
                self.assertEqual((self.given / "zip" / name).read_bytes(), now[f"{PROGRAMS}/{name}"], name)
        self.assertEqual(results, self.zebdiag("results"))
        self.assertIn(VERSION, self.zebdiag("doctor"))
        uninstall = [values["displayversion"] for key, values in registry.items() if r"\uninstall\{" in key]
        self.assertEqual([f'"{VERSION}"'], uninstall)

    def test_22_a_repair_brings_back_what_is_missing(self):
        before = self.installed_files()
        registry = self.machine.registry()
        (self.machine.drive / PROGRAMS / "Vorl.dll").unlink()
        (self.machine.drive / PROGRAMS / "zebdiag.mof").unlink()
        self.machine.wine("reg", "delete", r"HKLM\SOFTWARE\Classes\AppID\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E21}", "/f")
        # What "msiexec /fomus" does, which Wine's has not.
        self.install("/i", r"C:\given\zeb.msi", "REINSTALL=ALL", "REINSTALLMODE=omus", COMPILER)
        self.assertEqual(before, self.installed_files())
        self.assertEqual(registry, self.machine.registry())

    def test_23_an_older_version_is_refused(self):
        self.assertNotEqual(0, self.install("/i", r"C:\given\older.msi", COMPILER, fails=True))

    def test_29_removal_leaves_results_and_logs(self):
        self.install("/x", r"C:\given\zeb.msi", COMPILER)
        self.assertEqual(["ProgramData/Veltrane", DATA, DATA + "/ZebDiag.bin", DATA + "/ZebDiag.log"],
                         sorted(self.installed_files()))
        self.assertEqual(self.registry_before, self.machine.registry())

    # The zip

    def test_31_the_zip_is_installed_and_removed_by_its_scripts(self):
        compiler = COMPILER.removeprefix("MOFCOMP=")
        self.machine.compiled()
        self.machine.wine("cmd.exe", "/c", r"C:\given\zip\install.cmd", MOFCOMP="call " + compiler)
        compiled = dict(self.machine.compiled())
        self.assertEqual(8 + len(self.texts), len(compiled))
        self.assertFalse(compiled["zebdiag.mof"])
        self.assertLessEqual(set(self.texts), set(compiled))
        self.machine.wine(r"C:\given\zip\zebdiag.exe", "doctor")
        self.assertIn("PASSED", self.machine.wine(r"C:\given\zip\zebdiag.exe", *RUN)[1])
        self.machine.wine("cmd.exe", "/c", r"C:\given\zip\remove.cmd", MOFCOMP="call " + compiler)
        self.assertEqual(self.registry_before, self.machine.registry())


if __name__ == "__main__":
    del sys.argv[1:3]
    unittest.main(failfast=True, verbosity=2)
