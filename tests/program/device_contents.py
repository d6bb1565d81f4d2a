"""Devices filled with databases and a registry, what quillbox-device says of them, and how their items are made by hand."""
import json
import os
import pathlib
import subprocess
import sys

from program import BIN, FULL_RESTORE, ProgramTest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tools"))
import independent_set  # noqa: E402

# A sanitized program takes several times as long: what is many for the others is few for it.
SANITIZED = bool(os.environ.get("QUILLBOX_SANITIZE"))

I2, I4, R8, BOOL, UI2, UI4, TEXT, TIME, BYTES = 2, 3, 5, 11, 18, 19, 31, 64, 65
REGISTRY_HEAD = "\ufeffWindows Registry Editor Version 5.00\r\n\r\n"

BACKUP = """command 40003
wait "Full Backup"
check 1006
check 1007
ok
wait "Select"
select 1003 "{storage}"
ok
idle
"""
RESTORE = """command 40006
wait "Select"
select 1003 "{set}"
ok
wait "Full Restore"
ok
{answers}wait "Restore"
ok
idle
"""
SET = "\\Card\\QUILBOX\\QLBX0001.QLT"
# Of a set without a registry, which ends without its notice.
RESTORE_DATABASES = FULL_RESTORE.format(set=SET)


def item(number, kind, value, flags=0):
    """A property as an export has it. Of a text that is no Unicode the value is a list of its units, of bytes it is bytes."""
    found = {"id": f"{number:04x}{kind:04x}"}
    if flags:
        found["flags"] = flags
    found["units" if isinstance(value, list) else "value"] = value.hex() if kind == BYTES else value
    return found


def database(name, records, kind=0, sort=((0, 0),)):
    return {"name": name, "type": kind, "sort": list(sort), "records": records}


def every_type(number):
    """A record of all types, which tells its number."""
    return [item(1, TEXT, f"Name {number}"), item(2, I2, number % 65536 - 32768), item(3, UI2, number % 65536),
            item(4, I4, -number), item(5, UI4, 2 ** 32 - 1 - number), item(6, BOOL, number % 2), item(7, R8, number / 8),
            item(8, TIME, number << 32 | number, 0x40), item(9, BYTES, number.to_bytes(4, "little") * (number % 5)),
            item(10, TEXT, "a longer text, as notes are" if number % 3 else "")]


def lines(databases):
    """What an import takes and an export gives."""
    made = []
    for one in databases:
        sort = [{"property": identifier, "flags": flags} for identifier, flags in one["sort"]]
        made.append({"database": one["name"], "type": one["type"], "sort": sort})
        made += [{"record": record} for record in one["records"]]
    return "".join(json.dumps(line, ensure_ascii=False, separators=(",", ":")) + "\n" for line in made)


def stored(record):
    """The record as it comes out of a set, which has no values of these two types."""
    lost = {f"{BOOL:04x}": 0, f"{R8:04x}": 0.0}
    return [{**one, "value": lost[one["id"][4:]]} if one["id"][4:] in lost else one for one in record]


def after(rounds, databases):
    """The databases after so many backups and restores: each turns the order of the records around."""
    return [{**one, "records": [stored(record) for record in one["records"][::-1 if rounds % 2 else 1]]}
            for one in databases]


def image(one):
    """The image of a database, by the independent writer."""
    def value(found):
        if "units" in found:
            return b"".join(unit.to_bytes(2, "little") for unit in found["units"]).decode("utf-16-le", "surrogatepass")
        return bytes.fromhex(found["value"]) if found["id"].endswith(f"{BYTES:04x}") else found["value"]

    return independent_set.image_bytes(one["name"], one["type"], one["sort"],
                                       [[(int(found["id"], 16), value(found), found.get("flags", 0)) for found in record]
                                        for record in one["records"]])


def write_set(folder, databases, images=None, registry=None):
    """Set 1 in a card's folder, by the independent writer. `images` takes the place of images by a database's name."""
    images = {**{one["name"]: image(one) for one in databases}, **(images or {})}
    items = [(independent_set.DATABASE, one["name"], images[one["name"]]) for one in databases]
    items += [(independent_set.REGISTRY, "", registry)] if registry is not None else []
    comment = "by hand\0".encode("utf-16-le")
    listed = (len(comment) // 2).to_bytes(4, "little") + comment
    data = b""
    for kind, name, content in items:
        stream = independent_set.pack_stream(content)
        listed += independent_set.entry_bytes(kind, name, len(data), len(data) + len(stream))
        data += stream
    (folder / "QUILBOX").mkdir(parents=True, exist_ok=True)
    (folder / "QUILBOX" / "QLBX0001.QLT").write_bytes(listed)
    (folder / "QUILBOX" / "QLBX0001.QDT").write_bytes(data)


class ContentsTest(ProgramTest):
    def device_tool(self, *arguments, given=b"", code=0):
        finished = subprocess.run([BIN / "quillbox-device", *arguments], input=given, capture_output=True, timeout=600)
        self.assertEqual(finished.returncode, code, finished.stderr)
        return finished.stderr if code else finished.stdout

    def fill(self, databases, registry="", device=None):
        device = device or self.device
        (device / "object-store").mkdir(parents=True, exist_ok=True)
        self.device_tool("database", "import", "--replace", device, "-", given=lines(databases).encode())
        if registry:
            self.device_tool("registry", "import", device, "-", given=(REGISTRY_HEAD + registry).encode("utf-16-le"))

    def databases(self, device=None):
        return self.device_tool("database", "export", device or self.device).decode()

    def registry(self, device=None):
        return self.device_tool("registry", "export", device or self.device)

    def assert_holds(self, databases, device=None):
        """Not by assertEqual, which would compare megabytes for a picture of the difference."""
        found, wanted = self.databases(device).splitlines(), lines(databases).splitlines()
        for number, (have, want) in enumerate(zip(found, wanted)):
            self.assertEqual(have[:2000], want[:2000], f"line {number + 1}")
            self.assertTrue(have == want, f"line {number + 1} differs further on")
        self.assertEqual(len(found), len(wanted))

    def restore(self, answers="", before="", device=None, set=SET):
        """The device takes the set of the first device's card."""
        return self.quillbox(before + RESTORE.format(set=set, answers=answers), "--card", f"Card={self.card}",
                             device=device) if device else self.quillbox(before + RESTORE.format(set=set, answers=answers))
