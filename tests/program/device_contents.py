"""Devices filled with databases and a registry, and their contents after a restore."""
import independent_set
from companions import REGISTRY_HEAD, lines
from program import CONFIRM_REGISTRY, SET, ProgramTest, full_restore

# Difficult names on the host, and the same names on the device. A byte that can't be shown becomes U+F700 plus the
# byte.
NAMES = {
    b"caf\xe9": "caf\uf7e9", b"\xff\xfe": "\uf7ff\uf7fe", b"\xed\xa0\x80": "\uf7ed\uf7a0\uf780",
    b"x" * 255: "x" * 255, ("\u20ac" * 85).encode(): "\u20ac" * 85, b"\xe9" * 200: "\uf7e9" * 200,
    "\u05e2\u05d1\u05e8\u05d9\u05ea\u200f.txt".encode(): "\u05e2\u05d1\u05e8\u05d9\u05ea\u200f.txt",
    "\U0001F600\U0001F469\u200d\U0001F467".encode(): "\U0001F600\U0001F469\u200d\U0001F467",
    b" ": " ", b"   ": "   ", b"  leading": "  leading", b"trailing ": "trailing ", b"point.": "point.", b"...": "...",
    b"..x": "..x", b"a\\b": "a\uf75cb", b"\\": "\uf75c", b'"': "\uf722", b'say "hi"': "say \uf722hi\uf722", b"'": "'",
    b"*": "\uf72a", b"wh?t": "wh\uf73ft", b"<|>": "\uf73c\uf77c\uf73e", b"#no comment": "#no comment",
    b"[7]": "[7]", b"a&b": "a&b", b"%s%n": "%s%n", b"\x01\x1f": "\x01\x1f", b"tab\there": "tab\there",
    b"twin": "twin", b"Twin": "Twin", b"TWIN": "TWIN", "\ue000\uf75c".encode(): "\ue000\uf7ef\uf79d\uf79c",
    "e\u0301".encode(): "e\u0301", "\u00e9".encode(): "\u00e9",
}

I2, I4, R8, BOOL, UI2, UI4, TEXT, TIME, BYTES = 2, 3, 5, 11, 18, 19, 31, 64, 65


def item(number, kind, value, flags=0):
    """Returns a property as in an export. `value` is bytes for a blob, and a list of UTF-16 units for a text that isn't
    valid Unicode."""
    found = {"id": f"{number:04x}{kind:04x}"}
    if flags:
        found["flags"] = flags
    found["units" if isinstance(value, list) else "value"] = value.hex() if kind == BYTES else value
    return found


def every_type(number):
    """Returns a record with a property of each type. Its values depend on `number`."""
    return [item(1, TEXT, f"Name {number}"), item(2, I2, number % 65536 - 32768), item(3, UI2, number % 65536),
            item(4, I4, -number), item(5, UI4, 2 ** 32 - 1 - number), item(6, BOOL, number % 2), item(7, R8, number / 8),
            item(8, TIME, number << 32 | number, 0x40), item(9, BYTES, number.to_bytes(4, "little") * (number % 5)),
            item(10, TEXT, "a longer text, as notes are" if number % 3 else "")]


def texts(*values):
    """Returns one record for each value. The record contains only this text."""
    return [[item(1, TEXT, value)] for value in values]


def stored(record):
    """Returns the record as a restore makes it: a set doesn't keep the values of BOOL and R8."""
    lost = {f"{BOOL:04x}": 0, f"{R8:04x}": 0.0}
    return [{**one, "value": lost[one["id"][4:]]} if one["id"][4:] in lost else one for one in record]


def after(rounds, databases):
    """Returns the databases after this number of backups and restores. Each round reverses the order of the records."""
    return [{**one, "records": [stored(record) for record in one["records"][::-1 if rounds % 2 else 1]]}
            for one in databases]


def image(one):
    """Returns the image of a database, made by the independent writer."""
    def value(found):
        if "units" in found:
            return b"".join(unit.to_bytes(2, "little") for unit in found["units"]).decode("utf-16-le", "surrogatepass")
        return bytes.fromhex(found["value"]) if found["id"].endswith(f"{BYTES:04x}") else found.get("value")

    return independent_set.image_bytes(one["name"], one["type"], one["sort"] or [(0, 0)],
                                       [[(int(found["id"], 16), value(found), found.get("flags", 0)) for found in record]
                                        for record in one["records"]])


class ContentsTest(ProgramTest):
    def fill(self, *databases, registry="", device=None):
        device = device or self.device
        (device / "object-store").mkdir(parents=True, exist_ok=True)
        self.device_tool("database", "import", "--replace", device, "-", given=lines(*databases))
        if registry:
            self.device_tool("registry", "import", device, "-", given=(REGISTRY_HEAD + registry).encode("utf-16-le"))

    def write_set(self, *databases, registry=None, folder=None):
        """Writes set 1 to the card with the independent writer. A database may also be a name and the bytes of its
        image."""
        made = independent_set.Set()
        for one in databases:
            name, content = (one["name"], image(one)) if isinstance(one, dict) else one
            made.add(independent_set.DATABASE, name, content)
        if registry is not None:
            made.add(independent_set.REGISTRY, "", registry)
        return made.write(folder or self.sets)

    def assert_holds(self, *databases, device=None):
        """Compares without assertEqual, which would take long to show the difference between megabytes."""
        found, wanted = self.exported(device).splitlines(), lines(*databases).splitlines()
        for number, (have, want) in enumerate(zip(found, wanted)):
            self.assertEqual(have[:2000], want[:2000], f"line {number + 1}")
            self.assertTrue(have == want, f"line {number + 1} differs further on")
        self.assertEqual(len(found), len(wanted))

    def restore(self, *arguments, before="", answers="", registry=True, set=SET, **more):
        """Restores a set; `before` and `answers` are lines of the script before the restore and after its start."""
        script = before + full_restore(answers + (CONFIRM_REGISTRY if registry else ""), set)
        return self.quillbox(script, *arguments, **more)
