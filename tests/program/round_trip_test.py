"""All databases and the registry of a device are stored in a set and restored. Nothing is lost but what the format
can't hold."""

import json

import independent_set
from companions import SAMPLE_SETS, SANITIZED, database, lines
from device_contents import BYTES, I2, I4, TEXT, UI2, ContentsTest, after, every_type, image, item, texts
from independent_set import DATABASE
from program import DATABASES, REGISTRY, full_backup, full_restore, options_script, shown

SOME, MANY = (200, 1000) if SANITIZED else (1000, 33_000)
BIG = 100_000 if SANITIZED else 3_000_000

# Names with characters that have a meaning in paths, and the longest names.
NAMES = [".", "..", "...", "con", " blanks ", "dot.", "name.CDB", "%s%n%d", "tab\tand\x01", "n" * 31,
         "\U0001F600" * 15 + "é", "ünïcödé \uf75c"]
ODD = [
    [item(1, TEXT, [0xD800, 0x41]), item(2, TEXT, [0x41, 0xDC00]), item(3, TEXT, ""), item(4, BYTES, b""),
     item(5, TEXT, "\r\n\t")],
    [item(number, (I2, UI2, TEXT, BYTES)[number % 4], (number, number, str(number), bytes([number]))[number % 4])
     for number in range(200)],
    [item(1, BYTES, bytes(range(256)) * (BIG // 256)), item(2, TEXT, "x" * 70_000), item(3, BYTES, b"behind")],
    [item(1, I4, -2 ** 31, 0xFCFF)],
]
KEYS = ('[HKEY_CURRENT_USER\\Ключ\\a]b]\r\n@="by default"\r\n"q\\"uo\\\\te"=hex(7):61,00,00,00,00,00\r\n"n"=dword:00000005\r\n'
        '"empty"=hex:\r\n"half"=hex(1):00,d8,00,00\r\n"\U0001F600"="line\r\nbreak"\r\n[HKEY_USERS\\no values]\r\n')
NOTICE = ("I have restored the registry, to activate the registry restoration you have to do a device warm reboot, follow "
          "your compagnion instructions")


def all_kinds(many):
    return [database("Every type", [every_type(number) for number in range(many)], 24, [(0x1001F, 2), (0x20002, 1)]),
            database("No record", [], 2 ** 32 - 1),
            database("Odd values", ODD, 7, [(0x40003, flags) for flags in range(4)]),
            *(database(name, texts(name)) for name in NAMES)]


class RoundTripTest(ContentsTest):
    def test_everything_comes_back_in_reversed_order_and_after_two_trips_as_it_was(self):
        databases = [*all_kinds(SOME), database("Many records", [[item(1, I4, number)] for number in range(MANY)])]
        other = self.folder / "other"
        self.fill(*databases, registry=KEYS)
        self.quillbox("idle\n")  # the program leaves its options in the registry
        registry = self.registry()
        self.quillbox(full_backup(DATABASES, REGISTRY))
        self.assert_holds(*databases)

        (other / "object-store").mkdir(parents=True)
        restored = self.restore("--card", f"Card={self.card}", device=other)
        self.assertEqual([line for line in shown(restored.transcript, "window") if "message" in line],
                         [f'window message "Restore" text "{NOTICE}" buttons ok default ok'])
        self.assert_holds(*after(1, databases), device=other)
        self.assertEqual(self.registry(other), registry)
        self.assertEqual(list((other / "object-store").iterdir()), [])

        # Restores the other device's set into the first device, where all databases exist.
        self.quillbox(full_backup(DATABASES, REGISTRY, storage="Main device"), device=other)
        for made in (other / "object-store" / "QUILBOX").iterdir():
            made.replace(self.sets / made.name)
        small = [{**one, "records": one["records"][:5]} for one in databases]
        self.fill(*small)
        for before, answers in (('answer "Database:*" no\n', ""), ("", 'key "Enter"\n' * len(databases))):
            restored = self.restore(before=before, answers=answers)
            asked = [line for line in shown(restored.transcript, "window") if "exists replace" in line]
            self.assertEqual(len(asked), len(databases))
            self.assertTrue(all(line.endswith("buttons yes,no default no") for line in asked), asked)
            self.assert_holds(*small)
        self.restore(before='answer "Database:*exists replace ?" yes\n')
        self.assert_holds(*after(2, databases))
        self.assertEqual(self.registry(), registry)

    def test_sets_of_another_writer_come_back_the_same(self):
        databases = [*all_kinds(SOME), database("Sort orders", [], 7, [(number, number) for number in range(90)])]
        self.write_set(*databases, registry=independent_set.registry_bytes({"HKEY_USERS\\a": ['"n"="by hand"']}))
        self.restore()
        databases[-1]["sort"] = databases[-1]["sort"][:4]
        self.assert_holds(*after(1, databases))
        self.assertIn("by hand", self.registry().decode("utf-16"))

    def test_another_reader_and_quillbox_set_find_in_a_set_what_the_device_held(self):
        unknown = {"id": "00030063", "bits": "0123456789abcdef"}
        databases = all_kinds(50)
        self.fill(*databases, database("Unknown type", [[unknown]]), registry=KEYS)
        self.quillbox("idle\n")
        registry = self.registry()
        self.quillbox(full_backup(DATABASES, REGISTRY))
        databases = [*after(0, databases), database("Unknown type", [[{**unknown, "bits": "0" * 16}]])]
        found = self.items()
        for one in databases:
            self.assertTrue(found[DATABASE, one["name"]] == image(one), one["name"])
        out = self.output_folder()
        self.set_tool("extract", self.set, out)
        extracted = {path.name: path.read_bytes() for path in out.iterdir()}
        self.assertEqual(extracted.pop("registry.reg"), registry)
        self.assertEqual(sorted(content.decode() for content in extracted.values()), sorted(map(lines, databases)))

    def test_names_that_are_paths_reach_nothing_outside_and_are_reported(self):
        paths = ["..\\x", "none\\x", "folder\\..\\..\\x", "a/b", "a:b", "what?"]
        self.fill(*(database(name, texts(name)) for name in paths), database("good", texts("kept")), database("\\skipped"))
        self.write("folder/kept", b"kept")
        outside = [self.device / "x.CDB", self.folder / "x.CDB"]
        for path in outside:
            path.write_bytes(b"mine")
        before = self.exported()
        said = self.quillbox(options_script(log=True) + full_backup(DATABASES), code=4).said
        self.assertIn("no file can have that name", said)
        stored = [name for _, name in self.items()]
        self.assertIn("good", stored)
        log = self.log()
        self.assertFalse(any("skipped" in line for line in log), log)
        for name in paths:
            failures = sum(line.endswith(f"ERR: Database backup: {name} ") for line in log)
            self.assertEqual(failures, 0 if name in stored else 1, log)

        # A set with these names, which no backup would store.
        self.write_set(*(database(name, texts("hostile")) for name in paths))
        self.quillbox('answer "Database:*" no\n' + full_restore(), code=4)
        self.assertEqual(self.exported(), before)
        self.assertEqual([path.read_bytes() for path in outside], [b"mine"] * 2)
        self.assertEqual(self.content(), {b"folder/kept": b"kept"})

    def test_a_set_that_salvage_writes_is_restored_like_the_old_one(self):
        old, new = SAMPLE_SETS / "1/QUILBOX/QLBX0001.QLT", self.folder / "QLBX0007.QLT"
        self.set_tool("salvage", old.with_suffix(".QDT"), "--into", self.output_folder(), "--list", old, "--set", new, "--unproven",
                      code=1)  # some items are unproven
        listed = [json.loads(self.set_tool("list", path, "--json").text)["items"] for path in (old, new)]
        self.assertEqual(*listed)
        devices = [self.folder / path.stem for path in (old, new)]
        for path, device in zip((old, new), devices):
            self.device_tool("init", device)
            self.run_program("quillbox", "--device", device, "restore", path, "--existing", "replace", "--databases", "replace")
        self.assertEqual(*map(self.exported, devices))
        self.assertEqual(*(self.content(device / "object-store") for device in devices))
