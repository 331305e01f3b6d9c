"""A computer under Wine on which the package is installed: a prefix of its own, with the stand-in as management service
and the scripted agent's adapters, and what its registry and its disk have."""
import pathlib
import re
import shutil
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[3]
BIN = ROOT / "build/bin"
# The stand-in reads its files anew at each start, the real service keeps what it has compiled: so this compiler keeps
# a copy of each file, and a list of what it was given and how that ended.
COMPILER = r"""@echo off
set N=1
:next
if not exist "C:\standin\mof\%N%-%~nx1" goto free
set /a N=N+1
goto next
:free
copy "%~1" "C:\standin\mof\%N%-%~nx1" >nul
C:\standin\WmiStandin.exe /compile "C:\standin\mof\%N%-%~nx1"
set CODE=%errorlevel%
echo %CODE% %~nx1>>C:\standin\compiled.txt
exit /b %CODE%
"""
# What the installer and Wine write about themselves; Wine leaves such keys when they have become empty.
NOT_OURS = re.compile(r"\\installer(\\|$)|^software\\(wmi stand-in|wine)(\\|$)|\\wow6432node\\")


class Machine:
    def __init__(self, prefix):
        self.prefix = pathlib.Path(prefix)
        self.drive = self.prefix / "drive_c"
        self.standin = self.drive / "standin"
        environment = subprocess.run(
            ["bash", "-c", '. scripts/wine-env.sh "$1" && env -0', "-", str(prefix)], cwd=ROOT, check=True,
            capture_output=True).stdout.decode()
        self.environment = dict(line.split("=", 1) for line in environment.split("\0") if line)
        self.environment["LC_ALL"] = "C.UTF-8"
        self.held = None

    def __enter__(self):
        self.stop()
        shutil.rmtree(self.prefix, ignore_errors=True)
        subprocess.run([ROOT / "scripts/wine-prefix", self.prefix], check=True)
        self.hold()
        # The installer takes the system for Windows 10.
        self.set_value(r"HKCU\Software\Wine", "Version", "win10")
        return self

    def __exit__(self, *_):
        self.stop()

    def hold(self):
        """Keeps the prefix's server up: it first, then a program that stays, and then one that waits for Wine's own
        services. Two programs that both have to start the server get in each other's way."""
        subprocess.run(["wineserver", "-p"], env=self.environment, check=True, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.held = subprocess.Popen(["wine", "cmd.exe", "/q"], env=self.environment, stdin=subprocess.PIPE,
                                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        subprocess.run(["wine", "cmd.exe", "/c", "exit"], env=self.environment, check=True, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def stop(self):
        if (self.prefix / "system.reg").exists():
            subprocess.run(["wineserver", "-k"], env=self.environment, check=False, stderr=subprocess.DEVNULL)
            subprocess.run(["wineserver", "-w"], env=self.environment, check=False, timeout=60)
        if self.held:
            self.held.stdin.close()
            self.held.wait()
            self.held = None

    def wine(self, *arguments, fails=False, **environment):
        """Runs a Windows program. Returns its exit code and its output; a failure is refused, unless expected."""
        log = self.prefix / "program.log"
        # A file, because whatever the program starts would hold a pipe open.
        with open(log, "wb") as output:
            code = subprocess.run(["wine", *map(str, arguments)], env={**self.environment, **environment},
                                  stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                                  cwd=self.drive, timeout=240, check=False).returncode
        text = log.read_text(encoding="utf-8", errors="replace").replace("\r\n", "\n")
        if not fails and code != 0:
            raise AssertionError(f"{' '.join(map(str, arguments))} ended with {code}:\n{text}")
        return code, text

    def set_up_service(self, without_classes=()):
        """The stand-in, whose root\\cimv2 lacks these classes, and the scripted agent."""
        (self.standin / "mof").mkdir(parents=True)
        for file in ("WmiStandin.exe", "WmiStandin.dll", "VorlPS.dll", "VorlTest.dll", "system.mof"):
            shutil.copyfile(BIN / file, self.standin / file)
        classes = (BIN / "cimv2.mof").read_text(encoding="utf-8")
        for name in without_classes:
            classes, count = re.subn(r"^\[(?:(?!^\[).)*?^class %s\b.*?^\};\n" % name, "", classes,
                                     flags=re.MULTILINE | re.DOTALL)
            assert count == 1, name
        (self.standin / "cimv2.mof").write_text(classes, encoding="utf-8")
        (self.standin / "mofcomp.cmd").write_text(COMPILER.replace("\n", "\r\n"), encoding="ascii")
        for library in ("WmiStandin", "VorlPS", "VorlTest"):
            self.wine("regsvr32", "/s", rf"C:\standin\{library}.dll")
        self.wine(r"C:\standin\WmiStandin.exe", "/compile", r"C:\standin\system.mof", r"C:\standin\cimv2.mof")
        self.set_value(r"HKLM\SOFTWARE\WMI stand-in", "IdleMilliseconds", 500)
        self.set_value(r"HKLM\SOFTWARE\Veltrane\Halvern\ZEB\WMI\Providers", "TestVorl", 1)

    def compiled(self):
        """What the compiler was given since the last question: (file, whether it was refused)."""
        log = self.standin / "compiled.txt"
        lines = log.read_text(encoding="ascii").split("\n") if log.exists() else []
        log.unlink(missing_ok=True)
        return [(name.strip(), code != "0") for code, name in (line.split(" ", 1) for line in lines if line.strip())]

    def set_value(self, key, name, value):
        kind = "REG_DWORD" if isinstance(value, int) else "REG_SZ"
        self.wine("reg", "add", key, "/v", name, "/t", kind, "/d", value, "/f")

    def registry(self):
        """HKEY_LOCAL_MACHINE\\Software as {key: {name: value}}, without what is not the product's. Ends all programs,
        because Wine writes its registry then; its own program for that takes many seconds."""
        self.stop()
        text = (self.prefix / "system.reg").read_text(encoding="utf-8", errors="replace").replace("\\\n", "")
        self.hold()
        keys, values = {}, {}
        for line in text.split("\n"):
            if line.startswith("["):
                key = line[1:line.rindex("]")].replace("\\\\", "\\").lower()
                values = {}
                if key.startswith("software\\") and not NOT_OURS.search(key):
                    keys[key] = values
            elif line.startswith(('"', "@")):
                # Names and texts are quoted, with backslashes doubled.
                name, value = re.match(r'("(?:[^"\\]|\\.)*"|@)=(.*)', line).groups()
                values[name.strip('"').lower()] = re.sub(r"\s", "", value) if value.startswith("hex") else value
        return keys

    def files(self):
        """The disk without Windows' own folder and users' temporary files: {path: contents}."""
        found = {}
        for path in sorted(self.drive.rglob("*")):
            name = path.relative_to(self.drive).as_posix()
            if name.split("/")[0] in ("windows", "standin", "users", "given"):
                continue
            found[name] = path.read_bytes() if path.is_file() else None
        return found
