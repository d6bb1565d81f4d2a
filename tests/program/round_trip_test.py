"""All databases and the registry of a device into a set and back: nothing is lost but what the format can't hold."""
import unittest

from device_contents import (BACKUP, BYTES, I2, I4, RESTORE_DATABASES, SANITIZED, TEXT, UI2, ContentsTest, after, database,
                             every_type, image, independent_set, item, write_set)
from program import options_script, shown

MANY = 1000 if SANITIZED else 40_000
BIG = 100_000 if SANITIZED else 3_000_000

# Names that a path could trip over, and the longest ones.
NAMES = [".", "..", "...", "con", " blanks ", "dot.", "name.CDB", "%s%n%d", "tab\tand\x01", "n" * 31,
         "\U0001F600" * 15 + "é", "ünïcödé \uf75c"]
ODD = [
    [item(1, TEXT, [0xD800, 0x41]), item(2, TEXT, [0x41, 0xDC00]), item(3, TEXT, ""), item(4, BYTES, b""), item(5, TEXT, "\r\n\t")],
    [item(number, (I2, UI2, TEXT, BYTES)[number % 4], (number, number, str(number), bytes([number]))[number % 4])
     for number in range(200)],
    [item(1, BYTES, bytes(range(256)) * (BIG // 256)), item(2, TEXT, "x" * 70_000), item(3, BYTES, b"behind")],
    [item(1, I4, -2 ** 31, 0xFCFF)],
]
REGISTRY = ('[HKEY_CURRENT_USER\\Ключ\\a]b]\r\n@="by default"\r\n"q\\"uo\\\\te"=hex(7):61,00,00,00,00,00\r\n"n"=dword:00000005\r\n'
            '"empty"=hex:\r\n"half"=hex(1):00,d8,00,00\r\n"\U0001F600"="line\r\nbreak"\r\n[HKEY_USERS\\no values]\r\n')
NOTICE = ("I have restored the registry, to activate the registry restoration you have to do a device warm reboot, follow "
          "your compagnion instructions")


def all_kinds(many):
    return [database("Every type", [every_type(number) for number in range(many)], 24, [(0x1001F, 2), (0x20002, 1)]),
            database("No record", [], 2 ** 32 - 1),
            database("Odd values", ODD, 7, [(0x40003, flags) for flags in range(4)]),
            *(database(name, [[item(1, TEXT, name)]]) for name in NAMES)]


class RoundTripTest(ContentsTest):
    def setUp(self):
        super().setUp()
        self.other = self.base / "other"
        (self.other / "object-store").mkdir(parents=True)

    def test_everything_comes_back_in_turned_order_and_after_two_trips_as_it_was(self):
        databases = all_kinds(MANY)
        self.fill(databases, REGISTRY)
        self.quillbox("idle\n")  # which leaves its options in the registry
        registry = self.registry()
        self.quillbox(BACKUP.format(storage="\\Card"))
        self.assert_holds(databases)

        boxes = [line for line in shown(self.restore(device=self.other).transcript, "window") if "message" in line]
        self.assertEqual(boxes, [f'window message "Restore" text "{NOTICE}" buttons ok default ok'])
        self.assert_holds(after(1, databases), self.other)
        self.assertEqual(self.registry(self.other), registry)
        self.assertEqual(list((self.other / "object-store").iterdir()), [])

        # The other device's set into the first one, where all of them exist.
        self.quillbox(BACKUP.format(storage="Main device"), device=self.other)
        for ending in ("QLT", "QDT"):
            name = f"QLBX0001.{ending}"
            (self.card / "QUILBOX" / name).write_bytes((self.other / "object-store" / "QUILBOX" / name).read_bytes())
        small = [{**one, "records": one["records"][:5]} for one in databases]
        self.fill(small)
        for answers, before in (("", 'answer "Database:*" no\n'), ('key "Enter"\n' * len(databases), "")):
            asked = [line for line in shown(self.restore(answers, before).transcript, "window") if "exists replace" in line]
            self.assertEqual(len(asked), len(databases))
            self.assertTrue(all(line.endswith("buttons yes,no default no") for line in asked), asked)
            self.assert_holds(small)
        self.restore(before='answer "Database:*exists replace ?" yes\n')
        self.assert_holds(after(2, databases))
        self.assertEqual(self.registry(), registry)

    def test_images_of_another_writer_come_back_the_same(self):
        databases = [*all_kinds(500), database("Sort orders", [], 7, [(number, number) for number in range(90)])]
        write_set(self.card, databases, registry=independent_set.registry_bytes({"HKEY_USERS\\a": ['"n"="by hand"']}))
        self.restore()
        databases[-1]["sort"] = databases[-1]["sort"][:4]
        self.assert_holds(after(1, databases))
        self.assertIn("by hand", self.registry().decode("utf-16"))

    def test_images_are_those_of_another_writer_byte_for_byte(self):
        databases = [after(0, [one])[0] for one in all_kinds(50)[:3]]
        self.fill(databases)
        self.quillbox(BACKUP.format(storage="\\Card"))
        data = (self.card / "QUILBOX" / "QLBX0001.QDT").read_bytes()
        _, entries = independent_set.read_list((self.card / "QUILBOX" / "QLBX0001.QLT").read_bytes())
        found = {name: independent_set.unpack_stream(data[start:end]) for kind, name, start, end in entries if kind == 2}
        self.assertEqual(found.keys(), {one["name"] for one in databases})
        for one in databases:
            self.assertTrue(found[one["name"]] == image(one), one["name"])

    def test_names_that_are_paths_reach_no_other_place_and_are_told(self):
        reachable = database("good", [[item(1, TEXT, "kept")]])
        paths = ["..\\x", "..\\..\\x", "none\\x", "folder\\..\\..\\x", "a/b", "../x", "a:b", "what?"]
        self.fill([*(database(name, [[item(1, TEXT, name)]]) for name in paths), reachable,
                   database("\\skipped", [])])
        self.write("folder/kept", b"kept")
        outside = {path: path.write_bytes(b"mine") for path in (self.device / "x.CDB", self.base / "x.CDB")}
        before = self.databases()
        told = self.quillbox(options_script(log=True) + BACKUP.format(storage="\\Card"), code=4).stderr
        self.assertIn("no file can have that name", told)
        log = (self.card / "QUILBOX" / "BACKUP0001.LOG").read_text()
        _, entries = independent_set.read_list((self.card / "QUILBOX" / "QLBX0001.QLT").read_bytes())
        stored = [name for kind, name, _, _ in entries if kind == 2]
        self.assertIn("good", stored)
        self.assertNotIn("skipped", log)
        for name in paths:
            self.assertEqual(log.count(f"ERR: Database backup: {name} \n"), 0 if name in stored else 1, log)

        # A set that names them all the same.
        write_set(self.card, [*(database(name, [[item(1, TEXT, "hostile")]]) for name in paths), reachable])
        for path in self.card.glob("QUILBOX/*.LOG"):
            path.unlink()
        self.quillbox('answer "Database:*" no\n' + RESTORE_DATABASES, code=4)
        self.assertEqual(self.databases(), before)
        self.assertEqual({path: path.read_bytes() for path in outside}, {path: b"mine" for path in outside})
        self.assertEqual(self.content(), {b"folder/kept": b"kept"})
        self.assertEqual(sorted(path.name for path in self.base.iterdir() if path.name != "transcript"),
                         ["device", "other", "x.CDB"])


if __name__ == "__main__":
    unittest.main()
