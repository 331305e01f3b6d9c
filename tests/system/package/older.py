"""An older version to upgrade from: the same programs with another version in their resources."""
import pathlib
import struct

# What only the older version has.
GONE = "gone.txt"


def with_version(data, version, other):
    """A program whose version resource tells the other version; both texts have the same length."""
    place = data.index(struct.pack("<I", 0xFEEF04BD))
    assert data.find(struct.pack("<I", 0xFEEF04BD), place + 4) < 0

    # Two numbers of 32 bits: major and minor, patch and zero.
    def words(text):
        major, minor, patch = (int(part) for part in text.split("."))
        return struct.pack("<HHHH", minor, major, 0, patch)

    fixed = data[place:place + 52]
    assert fixed[8:16] == words(version) and fixed[16:24] == words(version)
    data = data[:place + 8] + words(other) * 2 + data[place + 24:]
    assert len(version) == len(other)
    for name in ("FileVersion", "ProductVersion"):
        at = data.index(name.encode("utf-16-le"), place)
        text = data.index(version.encode("utf-16-le"), at)
        assert text - at < 64
        data = data[:text] + other.encode("utf-16-le") + data[text + 2 * len(version):]
    return data


def write_list(listed, version, other, folder):
    """A list of files like the given one, of the other version."""
    folder.mkdir(parents=True)
    lines = []
    for line in pathlib.Path(listed).read_text(encoding="utf-8").splitlines():
        name, path = line.split("\t")
        data = pathlib.Path(path).read_bytes()
        if name.lower().endswith((".exe", ".dll")):
            data = with_version(data, version, other)
        elif name == "zebdiag.mof":
            assert data.count(f'Version("{version}")'.encode()) == 1
            data = data.replace(f'Version("{version}")'.encode(), f'Version("{other}")'.encode())
        copy = folder / name
        copy.parent.mkdir(exist_ok=True)
        copy.write_bytes(data)
        lines.append(f"{name}\t{copy}")
    (folder / GONE).write_text("Only the older version has this file.\n", encoding="utf-8")
    lines.append(f"{GONE}\t{folder / GONE}")
    files = folder.parent / "older-files"
    files.write_text("\n".join(lines) + "\n", encoding="utf-8")
    return files
