"""Writes sets without any of Quillbox's code. This module follows docs/format.md alone."""
import pathlib
import struct

MAGIC = b"QBXPK"
RAW_BLOCK = 131072
CLOSING_BLOCK = bytes.fromhex("110000")
FILE, DATABASE, REGISTRY = 1, 2, 3


def pack(raw):
    """Packs with literals alone. The result is valid, but not small."""
    count = len(raw)
    if count == 0:
        head = b""
    elif count <= 238:
        head = bytes([17 + count])
    else:
        zeros = (count - 19) // 255
        head = bytes(1 + zeros) + bytes([count - 18 - 255 * zeros])
    return head + raw + CLOSING_BLOCK


# Streams

def pack_stream(raw):
    pieces = [raw[at:at + RAW_BLOCK] for at in range(0, len(raw), RAW_BLOCK)] + [b""]
    return MAGIC + b"".join(struct.pack("<I", len(packed)) + packed for packed in map(pack, pieces))


# Sets

def entry_bytes(kind, name, start, end):
    packed_name = (name + "\0").encode("utf-16-le", "surrogatepass")
    return bytes([kind, 1]) + struct.pack("<I", len(packed_name) // 2) + packed_name + struct.pack("<II", start, end)


def value_bytes(kind, value):
    """Returns the bytes that an image keeps of a value of the type `kind`."""
    if kind in (2, 18):
        return struct.pack("<H", value & 0xFFFF)
    if kind in (3, 19):
        return struct.pack("<I", value & 0xFFFFFFFF)
    if kind == 64:
        return struct.pack("<Q", value)
    if kind == 31:
        text = (value + "\0").encode("utf-16-le", "surrogatepass")
        return struct.pack("<I", len(text)) + text
    if kind == 65:
        return struct.pack("<I", len(value)) + value
    return b""


def image_bytes(name, kind=0, sort=(), records=()):
    """Returns a database's image. A record is a list of (id, value) or (id, value, flags). The first record is the
    first one of the database."""
    packed_name = (name + "\0").encode("utf-16-le")
    image = bytearray(struct.pack("<I", len(packed_name))) + packed_name + struct.pack("<IHH", kind, len(records), len(sort))
    image += b"".join(struct.pack("<II", *order) for order in sort)
    for record in reversed(records):
        image += struct.pack("<H", len(record))
        for number, value, *flags in record:
            image += struct.pack("<I", number) + value_bytes(number & 0xFFFF, value)
            image += struct.pack("<H", flags[0] if flags else 0)
    return bytes(image)


def registry_bytes(keys):
    """Returns a registry file. `keys` has the values of each key as lines of the file: {"HKEY_USERS\\a": ['@="x"']}."""
    top = ["HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE", "HKEY_USERS"]
    every = sorted({**{key: [] for key in top}, **keys}.items())
    lines = ["Windows Registry Editor Version 5.00", ""]
    for key, values in every:
        lines += [f"[{key}]", *values, ""]
    lines.append(f"; End of registry: {len(every)} keys, {sum(len(values) for _, values in every)} values")
    return ("\ufeff" + "".join(line + "\r\n" for line in lines)).encode("utf-16-le", "surrogatepass")


class Set:
    """A set that is being made. Items from add() are sound. A test may damage `listed` and `data`."""

    def __init__(self, comment="Hi"):
        packed_comment = (comment + "\0").encode("utf-16-le")
        self.listed = struct.pack("<I", len(packed_comment) // 2) + packed_comment
        self.data = b""

    def add(self, kind, name, raw=None, stream=None):
        """Adds an item. Without `raw` it adds a database without records, or a registry of the top keys alone."""
        if raw is None:
            raw = image_bytes(name) if kind == DATABASE else registry_bytes({})
        stream = pack_stream(raw) if stream is None else stream
        self.listed += entry_bytes(kind, name, len(self.data), len(self.data) + len(stream))
        self.data += stream
        return self

    def write(self, folder, number=1):
        """Writes the set, and returns the path of its list file. Creates the folder if it is missing."""
        path = pathlib.Path(folder, f"QLBX{number:04d}.QLT")
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(self.listed)
        path.with_suffix(".QDT").write_bytes(self.data)
        return path
