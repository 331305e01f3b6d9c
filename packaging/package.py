#!/usr/bin/env python3
"""Makes what is given to users: an installation package, a portable zip and the debug information.

usage: package.py --files LIST --version V --output FOLDER [--lines]

LIST has a line "NAME<tab>PATH" for each file that ships. The output is zeb-V-x64.msi, zeb-V-x64.zip and
zeb-V-x64-symbols.zip. The same sources and the same SOURCE_DATE_EPOCH make the same bytes, unless they are signed.
--lines: fails if the symbols do not tell the lines of functions.
Environment: SOURCE_DATE_EPOCH is the time that everything bears (the last commit's, if not set); SIGN are the options
of "osslsigncode sign" for programs, libraries and package, for example -pkcs12 key.p12 -pass secret -ts URL.
"""
import argparse
import os
import pathlib
import shlex
import shutil
import subprocess
import time
import zipfile

import base_classes
import msi
import symbols

HERE = pathlib.Path(__file__).resolve().parent
# Only the zip is installed and removed by these; the package has the system's own way.
ZIP_ONLY = ("install.cmd", "remove.cmd")


def is_binary(name):
    return name.lower().endswith((".exe", ".dll"))


def time_of_sources():
    if os.environ.get("SOURCE_DATE_EPOCH"):
        return int(os.environ["SOURCE_DATE_EPOCH"])
    committed = subprocess.run(["git", "log", "-1", "--format=%ct"], cwd=HERE, capture_output=True, text=True,
                               check=False)
    return int(committed.stdout) if committed.returncode == 0 else 315532800  # 1980, where zip begins


def sign(path, description):
    options = os.environ.get("SIGN")
    if not options:
        return
    signed = path.with_name(path.name + ".signed")
    subprocess.run(["osslsigncode", "sign", *shlex.split(options), "-h", "sha256", "-n", description,
                    "-in", str(path), "-out", str(signed)], check=True, stdout=subprocess.DEVNULL)
    signed.replace(path)


def stage_files(listed, stage, apart, with_lines):
    for line in pathlib.Path(listed).read_text(encoding="utf-8").splitlines():
        name, path = line.split("\t")
        target = stage / name
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(path, target)
        if is_binary(name):
            debug = apart / (target.name + ".debug")
            symbols.split(target, debug)
            if with_lines:
                symbols.require_lines(debug)
            sign(target, "ZEB Diagnostics")
    classes = (HERE.parent / "resources/mof/cimv2.mof").read_text(encoding="utf-8")
    (stage / "base").mkdir()
    for name, text in base_classes.base_class_files(classes):
        (stage / "base" / name).write_text(text, encoding="utf-8")


def set_times(folder, epoch):
    for path in folder.rglob("*"):
        os.utime(path, (epoch, epoch))


def write_zip(path, folder, epoch):
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name in msi.files_of(folder):
            entry = zipfile.ZipInfo(name, time.gmtime(max(epoch, 315532800))[:6])
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o644 << 16
            archive.writestr(entry, (folder / name).read_bytes())


def main():
    parser = argparse.ArgumentParser()
    for option in ("--files", "--version", "--output"):
        parser.add_argument(option, required=True)
    parser.add_argument("--lines", action="store_true")
    arguments = parser.parse_args()
    output = pathlib.Path(arguments.output).resolve()
    epoch = time_of_sources()
    # For strip and the cabinet, which write times too.
    os.environ.update(SOURCE_DATE_EPOCH=str(epoch), TZ="UTC")

    work = output / "work"
    shutil.rmtree(work, ignore_errors=True)
    stage, apart = work / "files", work / "symbols"
    stage.mkdir(parents=True)
    apart.mkdir()
    stage_files(arguments.files, stage, apart, arguments.lines)
    set_times(work, epoch)

    name = f"zeb-{arguments.version}-x64"
    write_zip(output / f"{name}.zip", stage, epoch)
    write_zip(output / f"{name}-symbols.zip", apart, epoch)
    for only in ZIP_ONLY:
        (stage / only).unlink(missing_ok=True)
    versions = {file: f"{arguments.version}.0" for file in msi.files_of(stage) if is_binary(file)}
    package = output / f"{name}.msi"
    msi.build(stage, versions, arguments.version, epoch, package)
    sign(package, "ZEB Diagnostics")
    for made in sorted(output.glob(f"{name}*")):
        print(f"{made.stat().st_size:>9}  {made.name}")


main()
