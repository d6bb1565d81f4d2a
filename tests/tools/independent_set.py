"""Reads and writes sets without any of Quillbox's code: made from docs/format.md alone, with its LZO1X decoder."""
import pathlib
import struct

MAGIC = b"QBXPK"
RAW_BLOCK = 131072
PACKED_BLOCK = RAW_BLOCK + RAW_BLOCK // 16 + 64 + 3
CLOSING_BLOCK = bytes.fromhex("110000")
FILE, DATABASE, REGISTRY = 1, 2, 3


class Damaged(Exception):
    pass


class Reader:
    """Bytes that are taken from the beginning to the end."""

    def __init__(self, raw, what):
        self.raw = raw
        self.what = what
        self.at = 0

    def take(self, count):
        if self.at + count > len(self.raw):
            raise Damaged(f"{self.what} ends early")
        piece = self.raw[self.at:self.at + count]
        self.at += count
        return piece

    def number(self, size=4):
        return int.from_bytes(self.take(size), "little")

    def ended(self):
        return self.at == len(self.raw)


# LZO1X

class Block(Reader):
    """One packed block that is being read, and what it has given so far."""

    def __init__(self, packed):
        super().__init__(packed, "a block")
        self.unpacked = bytearray()

    def long_length(self, base):
        zeros = 0
        while (last := self.number(1)) == 0:
            zeros += 1
        return base + 255 * zeros + last

    def literals(self, count):
        self.unpacked += self.take(count)
        self.check_room()

    def match(self, length, distance):
        start = len(self.unpacked) - distance
        if start < 0:
            raise Damaged("a match reaches before the block's begin")
        for position in range(start, start + length):
            self.unpacked.append(self.unpacked[position])
        self.check_room()

    def check_room(self):
        if len(self.unpacked) > RAW_BLOCK:
            raise Damaged("a block unpacks to more than it may")


def unpack(packed):
    block = Block(packed)
    state = 0
    if packed and packed[0] > 17:
        count = block.number(1) - 17
        block.literals(count)
        state = min(count, 4)
    while True:
        b = block.number(1)
        if b < 16 and state == 0:
            block.literals(3 + b if b else block.long_length(18))
            state = 4
            continue
        if b < 16 and state == 4:
            block.match(3, 4 * block.number(1) + (b >> 2) + 2049)
            state = b & 3
        elif b < 16:
            block.match(2, 4 * block.number(1) + (b >> 2) + 1)
            state = b & 3
        elif b < 32:
            length = 2 + (b & 7) if b & 7 else block.long_length(9)
            word = block.number(2)
            distance = 16384 + 2048 * (b & 8) + (word >> 2)
            if distance == 16384:
                break
            block.match(length, distance)
            state = word & 3
        elif b < 64:
            length = 2 + (b & 31) if b & 31 else block.long_length(33)
            word = block.number(2)
            block.match(length, (word >> 2) + 1)
            state = word & 3
        else:
            length = 3 + ((b >> 5) & 1) if b < 128 else 5 + ((b >> 5) & 3)
            block.match(length, 8 * block.number(1) + ((b >> 2) & 7) + 1)
            state = b & 3
        block.literals(state)
    if not block.ended():
        raise Damaged("bytes follow the end of a block")
    return bytes(block.unpacked)


def pack(raw):
    """Literals alone: valid, if not small."""
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

def unpack_stream(stream):
    reader = Reader(stream, "the stream")
    if reader.take(len(MAGIC)) != MAGIC:
        raise Damaged("no stream begins at the start offset")
    pieces = []
    while True:
        size = reader.number()
        if size == 0 or size > PACKED_BLOCK:
            raise Damaged(f"a block has a length of {size}")
        piece = unpack(reader.take(size))
        if not piece:
            break
        pieces.append(piece)
    if not reader.ended():
        raise Damaged("bytes follow the closing block")
    return b"".join(pieces)


def pack_stream(raw):
    pieces = [raw[at:at + RAW_BLOCK] for at in range(0, len(raw), RAW_BLOCK)] + [b""]
    return MAGIC + b"".join(struct.pack("<I", len(packed)) + packed for packed in map(pack, pieces))


# Sets

def text(raw, what):
    decoded = raw.decode("utf-16-le", "surrogatepass")
    if decoded[-1:] != "\0" or "\0" in decoded[:-1]:
        raise Damaged(f"{what} isn't terminated where it should be")
    return decoded[:-1]


def read_list(raw):
    """The comment and (kind, name, start, end) of each entry."""
    reader = Reader(raw, "the list")
    comment = text(reader.take(2 * reader.number()), "the comment")
    entries = []
    while not reader.ended():
        kind, flag = reader.take(2)
        if kind not in (FILE, DATABASE, REGISTRY) or flag != 1:
            raise Damaged(f"an entry of kind {kind} with a second byte of {flag}")
        name = text(reader.take(2 * reader.number()), "a name")
        entries.append((kind, name, reader.number(), reader.number()))
    return comment, entries


def read_set(list_path):
    """The items of a set as (kind, name, content), in their order. Raises Damaged at the first deviation from the format."""
    _, entries = read_list(list_path.read_bytes())
    data = list_path.with_suffix(".QDT").read_bytes()
    items = []
    expected = 0
    for kind, name, start, end in entries:
        if start != expected or end < start or end > len(data):
            raise Damaged(f"{name}: its stream lies from {start} to {end}")
        expected = end
        try:
            items.append((kind, name, unpack_stream(data[start:end])))
        except Damaged as fault:
            raise Damaged(f"{name}: {fault}") from fault
    if expected != len(data):
        raise Damaged(f"the data file has {len(data)} bytes, the entries {expected}")
    return items


def entry_bytes(kind, name, start, end):
    packed_name = (name + "\0").encode("utf-16-le", "surrogatepass")
    return bytes([kind, 1]) + struct.pack("<I", len(packed_name) // 2) + packed_name + struct.pack("<II", start, end)


def value_bytes(kind, value):
    """What an image keeps of a value of the type `kind`; of a text, its units come as bytes."""
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
    """A database's image. A record is a list of (id, value) or (id, value, flags); the first is the database's first."""
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
    """A registry file. `keys` names the values of each key, as they are in the file: {"HKEY_USERS\\a": ['@="x"']}."""
    top = ["HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE", "HKEY_USERS"]
    every = sorted({**{key: [] for key in top}, **keys}.items())
    lines = ["Windows Registry Editor Version 5.00", ""]
    for key, values in every:
        lines += [f"[{key}]", *values, ""]
    lines.append(f"; End of registry: {len(every)} keys, {sum(len(values) for _, values in every)} values")
    return ("\ufeff" + "".join(line + "\r\n" for line in lines)).encode("utf-16-le", "surrogatepass")


class Set:
    """A set that is being made. What add() puts in is good; a test may damage `listed` and `data`."""

    def __init__(self, comment="Hi"):
        packed_comment = (comment + "\0").encode("utf-16-le")
        self.listed = struct.pack("<I", len(packed_comment) // 2) + packed_comment
        self.data = b""

    def add(self, kind, name, raw=None, stream=None):
        """Without `raw` a database without records, or a registry of the top keys alone."""
        if raw is None:
            raw = image_bytes(name) if kind == DATABASE else registry_bytes({})
        stream = pack_stream(raw) if stream is None else stream
        self.listed += entry_bytes(kind, name, len(self.data), len(self.data) + len(stream))
        self.data += stream
        return self

    def write(self, folder, number=1):
        """The path of the list file. The folder is made if it is missing."""
        path = pathlib.Path(folder, f"QLBX{number:04d}.QLT")
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(self.listed)
        path.with_suffix(".QDT").write_bytes(self.data)
        return path
