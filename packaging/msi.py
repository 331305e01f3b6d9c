"""Makes the installation package: wixl the frame and the files, msibuild the rows of tables.py."""
import hashlib
import pathlib
import re
import struct
import subprocess
import uuid

import tables

HERE = pathlib.Path(__file__).resolve().parent
NAMES = uuid.UUID("51c5d558-eff1-475b-b889-a6d62e31b481")
FOLDERS = {"": "ProgramFolder", "base": "BaseFolder", "docs": "DocsFolder"}
COLUMNS = {
    "Component": "Component ComponentId Directory_ Attributes Condition KeyPath",
    "FeatureComponents": "Feature_ Component_",
    "Registry": "Registry Root Key Name Value Component_",
    "CreateFolder": "Directory_ Component_",
    "RemoveFile": "FileKey Component_ FileName DirProperty InstallMode",
    "Upgrade": "UpgradeCode VersionMin VersionMax Language Attributes Remove ActionProperty",
    "Signature": "Signature FileName MinVersion MaxVersion MinSize MaxSize MinDate MaxDate Languages",
    "DrLocator": "Signature_ Parent Path Depth",
    "AppSearch": "Property Signature_",
    "CustomAction": "Action Type Source Target",
    "MsiLockPermissionsEx": "MsiLockPermissionsEx LockObject Table SDDLText Condition",
    "InstallExecuteSequence": "Action Condition Sequence",
    "InstallUISequence": "Action Condition Sequence",
}
# Tables that wixl does not make.
NEW_TABLES = [
    "CREATE TABLE `DrLocator` (`Signature_` CHAR(72) NOT NULL, `Parent` CHAR(72), `Path` CHAR(255), `Depth` SHORT "
    "PRIMARY KEY `Signature_`, `Parent`, `Path`)",
    "CREATE TABLE `MsiLockPermissionsEx` (`MsiLockPermissionsEx` CHAR(72) NOT NULL, `LockObject` CHAR(72) NOT NULL, "
    "`Table` CHAR(32) NOT NULL, `SDDLText` LONGCHAR NOT NULL, `Condition` CHAR(255) "
    "PRIMARY KEY `MsiLockPermissionsEx`)",
]


def identifier(text):
    return "{%s}" % str(uuid.uuid5(NAMES, text)).upper()


def files_of(stage):
    return sorted(path.relative_to(stage).as_posix() for path in stage.rglob("*") if path.is_file())


def file_id(name):
    return re.sub(r"[^A-Za-z0-9_.]", "_", name)


def write_files_wxs(stage, names, path):
    """One component for each file, known by the file's name in every version."""
    lines = ['<?xml version="1.0" encoding="utf-8"?>', '<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi">',
             "<Fragment>"]
    for name in names:
        folder, _, leaf = name.rpartition("/")
        lines.append(f'<DirectoryRef Id="{FOLDERS[folder]}"><Component Id="File.{file_id(name)}" '
                     f'Guid="{identifier("file " + name.lower())}" Win64="yes">'
                     f'<File Id="{file_id(name)}" Name="{leaf}" Source="{name}" KeyPath="yes"/>'
                     "</Component></DirectoryRef>")
    lines += ["</Fragment>", '<Fragment><ComponentGroup Id="Files">']
    lines += [f'<ComponentRef Id="File.{file_id(name)}"/>' for name in names]
    lines += ["</ComponentGroup></Fragment>", "</Wix>"]
    path.write_text("\n".join(lines) + "\n", encoding="utf-8")


def literal(value):
    if isinstance(value, int):
        return str(value)
    if "'" in value:
        raise SystemExit(f"a text of the package has a quotation mark: {value}")
    return f"'{value}'"


def insert(table, rows):
    columns = COLUMNS[table].split()
    for row in rows:
        assert len(row) == len(columns), (table, row)
        filled = [(column, value) for column, value in zip(columns, row) if value is not None]
        names = ", ".join(f"`{column}`" for column, _ in filled)
        yield f"INSERT INTO `{table}` ({names}) VALUES ({', '.join(literal(value) for _, value in filled)})"


def queries(names, versions, version):
    base = [name.rpartition("/")[2] for name in names if name.startswith("base/")]
    actions = tables.ACTIONS + [tables.base_class_action(number, file) for number, file in enumerate(base)]
    for number, texts in enumerate((name for name in names if name.endswith(".mfl")), start=1):
        removal = re.sub(r"^zebdiag-(.*)\.mfl$", r"zebdiag-remove-\1.mof", texts)
        actions += tables.text_actions(number, texts, removal)
    yield from NEW_TABLES
    # Files with a version are compared by it and not by their contents.
    for name in names:
        if name in versions:
            yield (f"UPDATE `File` SET `Version`='{versions[name]}', `Language`='1033' "
                   f"WHERE `File`='{file_id(name)}'")
            yield f"DELETE FROM `MsiFileHash` WHERE `File_`='{file_id(name)}'"
    yield from insert("Component", tables.COMPONENTS)
    yield from insert("FeatureComponents", [("Complete", row[0]) for row in tables.COMPONENTS])
    yield from insert("Registry", tables.REGISTRY)
    yield from insert("CreateFolder", tables.CREATE_FOLDER)
    yield from insert("RemoveFile", tables.REMOVE_FILE)
    yield from insert("MsiLockPermissionsEx", tables.LOCK_PERMISSIONS)
    yield from insert("Upgrade", tables.upgrade(version))
    yield from insert("Signature", tables.FILE_SIGNATURE)
    yield from insert("DrLocator", tables.FILE_LOCATOR)
    yield from insert("AppSearch", tables.SEARCH)
    yield from insert("CustomAction", [row[:4] for row in actions])
    yield from insert("InstallExecuteSequence", tables.STANDARD_ACTIONS)
    yield from insert("InstallExecuteSequence", [(row[0], row[4], row[5]) for row in actions])
    yield from insert("InstallUISequence", tables.STANDARD_ACTIONS[:1])


def fix_summary(path, package_code, epoch):
    """Replaces what wixl makes up at each run: the package code and the times of making, at their place in the file."""
    data = bytearray(path.read_bytes())
    # The format's identifier, the place of the section from the stream's beginning, which is 28 bytes before.
    format_id = data.index(uuid.UUID("f29f85e0-4ff9-1068-ab91-08002b27b3d9").bytes_le)
    section = format_id - 28 + struct.unpack_from("<I", data, format_id + 16)[0]
    count = struct.unpack_from("<I", data, section + 4)[0]
    places = dict(struct.unpack_from("<II", data, section + 8 + 8 * i) for i in range(count))
    code, times = section + places[9], [section + places[12], section + places[13]]
    if struct.unpack_from("<II", data, code) != (30, 39) or any(data[at] != 64 for at in times):
        raise SystemExit("the summary of the package is not where it was")
    data[code + 8:code + 8 + 38] = package_code.encode()
    for at in times:
        struct.pack_into("<Q", data, at + 4, (epoch + 11644473600) * 10000000)
    path.write_bytes(data)


def build(stage, versions, version, epoch, output):
    names = files_of(stage)
    content = hashlib.sha256()
    for part in [HERE / "zebdiag.wxs", HERE / "tables.py", HERE / "permissions.py", HERE / "msi.py"]:
        content.update(part.read_bytes())
    for name in names:
        content.update(name.encode() + b"\0" + (stage / name).read_bytes())
    files = stage.parent / "files.wxs"
    write_files_wxs(stage, names, files)
    output.unlink(missing_ok=True)
    made = subprocess.run(
        ["wixl", "-a", "x64", "-D", "ProductCode=" + identifier("product " + version), "-D", "Version=" + version,
         "-o", str(output), str(HERE / "zebdiag.wxs"), str(files)],
        cwd=stage, capture_output=True, text=True, check=False)
    # It warns of what it leaves out, and goes on.
    if made.returncode or made.stderr.strip():
        raise SystemExit("wixl: " + made.stderr)
    command = ["msibuild", str(output)]
    for query in queries(names, versions, version):
        command += ["-q", query]
    subprocess.run(command, check=True)
    fix_summary(output, identifier("package " + content.hexdigest()), epoch)
