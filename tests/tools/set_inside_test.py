"""The output of quillbox-set about databases and the registry inside of sets, and the files that it writes for them:
sound and damaged ones."""
import json
import resource
import struct
import unittest

from companions import SANITIZED, CompanionTest
from independent_set import DATABASE, REGISTRY, Set, image_bytes, pack_stream, registry_bytes

SORT = [(0x3001F, 2), (0x40040, 5)]
RECORDS = [
    [(0x1001F, "Grüße \"😀\""), (0x10002, -5), (0x20012, 65535), (0x30003, -7, 3), (0x40013, 4294967295)],
    [(0x40040, 2**64 - 1), (0x50041, b"\x00\xff"), (0x60041, b""), (0x2001F, "")],
    [(0x7000B, None), (0x80005, None)],
]
LINES = [
    {"database": "Tasks", "type": 26, "sort": [{"property": number, "flags": flags} for number, flags in SORT]},
    {"record": [{"id": "0001001f", "value": "Grüße \"😀\""}, {"id": "00010002", "value": -5},
                {"id": "00020012", "value": 65535}, {"id": "00030003", "flags": 3, "value": -7},
                {"id": "00040013", "value": 4294967295}]},
    {"record": [{"id": "00040040", "value": 2**64 - 1}, {"id": "00050041", "value": "00ff"},
                {"id": "00060041", "value": ""}, {"id": "0002001f", "value": ""}]},
    {"record": [{"id": "0007000b", "value": 0}, {"id": "00080005", "value": 0.0}]},
]
WARNING = "is of a database named"
IMAGE = image_bytes("Tasks", 26, SORT, RECORDS)
REGISTRY_BYTES = registry_bytes({"HKEY_CURRENT_USER\\ControlPanel": ['@="x"', '"Number"=dword:0000001f'], "HKEY_USERS\\a": []})


def lines_of(path):
    return [json.loads(line) for line in path.read_text(encoding="utf-8").splitlines()]


class InsideTest(CompanionTest):
    def set_of(self, image=IMAGE, name="Tasks", registry=REGISTRY_BYTES):
        return Set().add(DATABASE, name, image).add(REGISTRY, "", registry).write(self.folder)

    def faults_of(self, path, code):
        """Returns each fault or warning as (item, text)."""
        return [(fault["item"], fault["reason"]) for fault in self.verified(path, code)["faults"]]

    def extracted(self, path, *options, code=0):
        """Extracts the set, and returns the paths of the files by name."""
        out = self.output_folder()
        self.set_tool("extract", *options, path, out, code=code)
        return {found.name: found for found in out.iterdir()}


class GoodInsideTest(InsideTest):
    def test_a_database_comes_out_in_the_devices_order_with_every_value_of_its_image(self):
        found = self.extracted(self.set_of())
        self.assertEqual(set(found), {"Tasks.jsonl", "registry.reg"})
        self.assertEqual(lines_of(found["Tasks.jsonl"]), LINES)
        self.assertEqual(found["registry.reg"].read_bytes(), REGISTRY_BYTES)

    def test_values_and_records_across_the_blocks_of_a_stream_come_out_whole(self):
        # The text has characters of two units at odd and at even offsets.
        blob, text = bytes(range(256)) * 1200, "\u4e16\"" + "wide \U0001F600" * 60000
        records = [[(0x10003, number)] for number in range(40000)] + [[(0x10041, blob), (0x1001F, text)], []]
        found = lines_of(self.extracted(self.set_of(image_bytes("Tasks", 0, [], records)))["Tasks.jsonl"])
        self.assertEqual([line["record"][0]["value"] for line in found[1:40001]], list(range(40000)))
        self.assertEqual([value["value"] for value in found[40001]["record"]], [blob.hex(), text])
        self.assertEqual(len(found), 40002, "a record without properties is none")

    def test_flags_of_a_property_come_out_as_a_restore_takes_them(self):
        """0x100 is set only in results, 0x200 deletes a property. No stored property has these flags, and no import
        accepts them."""
        path = self.set_of(image_bytes("Tasks", 7, [], [
            [(0x10003, 1, 0x100), (0x20003, 2, 0x101), (0x30003, 3, 0x200)],
            [(0x10003, 4), (0x20003, 5), (0x10003, 6, 0x300), (0x20003, 7)], [(0x10003, 8, 0x200)]]))
        self.assertEqual(self.faults_of(path, 0), [])
        self.assertEqual(lines_of(self.extracted(path)["Tasks.jsonl"])[1:],
                         [{"record": [{"id": "00010003", "value": 1}, {"id": "00020003", "flags": 1, "value": 2}]},
                          {"record": [{"id": "00020003", "value": 7}]}])
        self.assertEqual(self.extracted(path, "--form", "csv")["Tasks.csv"].read_bytes().split(),
                         [b"00010003,00020003,00020003", b"flags", b"1,2,1", b",7,"])

    def test_list_says_what_is_inside_only_when_asked(self):
        path = self.set_of()
        text = self.set_tool("list", path, "--inside").text
        self.assertIn('"Tasks", 3 records, type 26, sorted by 0003001f without case; 00040040 descending unknown first',
                      text)
        self.assertIn("6 keys, 2 values", text)
        items = json.loads(self.set_tool("list", path, "--inside", "--json").text)["items"]
        self.assertEqual([item["inside"] for item in items],
                         [{"name": "Tasks", "type": 26, "records": 3, "sort": LINES[0]["sort"]}, {"keys": 6, "values": 2}])
        path.with_suffix(".QDT").write_bytes(b"")
        self.set_tool("list", path)  # still works, because it unpacks nothing
        for options in (["--inside"], ["--sizes", "--json"], ["--sizes"]):
            self.set_tool("list", path, *options, code=1)
        damaged = self.set_tool("list", path, "--inside", "--json", code=1)
        self.assertEqual([item["inside"] for item in json.loads(damaged.text)["items"]], [None, None])

    def test_what_surprises_at_a_restore_is_a_warning_and_no_fault(self):
        for image, name, reason in [(image_bytes("Other", 26), "Tasks", '"Other"'),
                                    (image_bytes("x" * 32), "x" * 32, "31 characters"),
                                    (image_bytes("Tasks", 0, [], [[], [(0x10003, 1)], []]), "Tasks", "2 records")]:
            warnings = self.faults_of(self.set_of(image, name), 0)
            self.assertEqual(len(warnings), 1, warnings)
            self.assertIn(reason, warnings[0][1])
        self.assertEqual(self.faults_of(self.set_of(image_bytes("TASKS")), 0), [], "the store finds it without case")
        said = self.set_tool("verify", self.set_of(image_bytes("\x1b[2J"))).text
        self.assertNotIn("\x1b", said)
        self.assertIn("warning: ", said)
        self.assertIn("Sound: 2 items, 1 warning, not sealed.", said)

    def test_a_form_that_cannot_hold_a_database_replaces_nothing(self):
        path, out = self.set_of(), self.output_folder()
        old = out / "Tasks.vcf"
        old.write_bytes(b"old")
        done = self.set_tool("extract", "--form", "vcard", "--force", path, out, code=1)
        self.assertIn("database Tasks: vCard holds contacts", done.said)
        self.assertEqual(old.read_bytes(), b"old")
        self.set_tool("extract", "--form", "csv", path, out, "Tasks")
        self.assertEqual({found.name for found in out.iterdir()}, {"Tasks.csv", "Tasks.vcf", "registry.reg"})
        for form in (["csv", "--raw"], ["none"]):
            self.set_tool("extract", "--form", *form, path, out, code=2)

    def test_of_names_that_become_one_file_name_the_first_database_is_kept(self):
        path = Set().add(DATABASE, "a/b", image_bytes("first")).add(DATABASE, "a\\b", image_bytes("second")).write(self.folder)
        out = self.output_folder()
        for _ in range(2):
            self.set_tool("extract", "--force", path, out, code=1)
            self.assertEqual(lines_of(out / "a_b.jsonl")[0]["database"], "first")


class DamagedInsideTest(InsideTest):
    def test_each_fault_of_an_image_is_named_and_nothing_of_it_is_written(self):
        text_at = IMAGE.index("Grüße".encode("utf-16-le"))
        size_at = text_at - 4
        units = struct.unpack_from("<I", IMAGE, size_at)[0]
        count_at = 4 + 12 + 4

        def changed(at, new):
            return IMAGE[:at] + new + IMAGE[at + len(new):]

        for image, reason in [(b"", "before its first record"), (IMAGE[:20], "before its first record"),
                              (b"\0" * 20, "a name of 0 bytes"), (b"\5" + IMAGE[1:], "a name of 5 bytes"),
                              (b"\xff" * 30, "a name of 4294967295 bytes"), (changed(14, b"x\0"), "no closing NUL"),
                              (changed(6, b"\0\0"), "the name in its image has a NUL before"),
                              (image_bytes("\0" * 4), "empty name"), (image_bytes("Tasks", 0, SORT * 3), "6 sort orders"),
                              (IMAGE + b"abc", "3 bytes too many"), (IMAGE[:-1], "inside record 3 of 3"),
                              (changed(count_at, b"\4\0"), "inside record 4 of 4"),
                              (changed(count_at, b"\2\0"), "too many after"),
                              (changed(size_at, b"\xfe\xff\xff\xff"), "inside record 3 of 3"),
                              (changed(size_at + units + 2, b"x\0"), "no closing NUL"),
                              (changed(text_at, b"\0\0"), "has a NUL before its end")]:
            with self.subTest(reason):
                path = self.set_of(image)
                self.assert_fault(path, 1, reason)
                self.assertEqual(set(self.extracted(path, code=1)), {"registry.reg"}, "half must not pass for all")

    def test_each_fault_of_a_registry_is_named_and_nothing_is_written(self):
        text = REGISTRY_BYTES.decode("utf-16-le")
        for damaged, reason in [("", "byte order mark"), ("REGEDIT4\r\n", "byte order mark"),
                                (text[:-40], "its closing line is missing"), (text.replace("2 values", "3 values"), "numbers"),
                                (text.replace("=dword", "=word"), "no known form"),
                                (text.replace("_USERS\\", "_X\\"), "predefined"), (text + "x", "follows the closing line"),
                                (text.replace("@=", "@ "), "line 8: an equals")]:
            with self.subTest(reason):
                path = self.set_of(registry=damaged.encode("utf-16-le"))
                self.assert_fault(path, 2, reason)
                self.assertEqual(set(self.extracted(path, code=1)), {"Tasks.jsonl"})
        self.assert_fault(self.set_of(registry=REGISTRY_BYTES[:-1]), 2, "middle of a character")

    def test_a_damaged_stream_is_the_fault_and_not_what_follows_from_it(self):
        for kind, raw, name in ((DATABASE, IMAGE, "Tasks"), (REGISTRY, REGISTRY_BYTES, "")):
            path = Set().add(kind, name, stream=pack_stream(raw)[:-7]).write(self.folder)
            self.assert_fault(path, 1, "closing block is missing")

    def test_whole_records_before_the_damage_are_kept_when_asked(self):
        found = self.extracted(self.set_of(IMAGE[:-1]), "--keep-damaged", code=1)
        self.assertEqual(lines_of(found["Tasks.jsonl"]), [LINES[0], *LINES[2:]])
        self.assertEqual(set(self.extracted(self.set_of(b"\0" * 20), "--keep-damaged", code=1)), {"registry.reg"})
        cut = self.extracted(self.set_of(registry=REGISTRY_BYTES[:-40]), "--keep-damaged", code=1)["registry.reg"]
        self.assertEqual(cut.read_bytes(), REGISTRY_BYTES[:-40])

    def test_what_is_damaged_replaces_nothing(self):
        out = self.output_folder()
        self.set_tool("extract", self.set_of(), out)
        self.set_tool("extract", "--force", self.set_of(IMAGE[:-1], registry=b"x"), out, code=1)
        self.assertEqual(lines_of(out / "Tasks.jsonl"), LINES)
        self.assertEqual((out / "registry.reg").read_bytes(), REGISTRY_BYTES)
        self.assertEqual(len(list(out.iterdir())), 2, "no temporary file is left")

    def test_verify_and_extract_agree_on_a_database_and_a_registry_cut_and_changed_at_every_byte(self):
        """One set contains all the damage, with one item for each. So a single process verifies it, and another one
        extracts it."""
        def damaged(raw):
            return [raw[:cut] for cut in range(len(raw))] + [
                raw[:at] + bytes([raw[at] ^ mask]) + raw[at + 1:] for at in range(len(raw)) for mask in (1, 255)]

        made = Set()
        for number, image in enumerate(damaged(IMAGE)):
            made.add(DATABASE, f"d{number}", image)
        path = made.write(self.folder)
        faulty = {item for item, reason in self.faults_of(path, 1) if WARNING not in reason}
        self.assertLessEqual(set(range(1, len(IMAGE) + 1)), faulty, "a cut image is never sound")
        found = self.extracted(path, code=1)
        self.assertEqual({int(name[1:-6]) + 1 for name in found}, set(range(1, 3 * len(IMAGE) + 1)) - faulty)
        for name, extracted in found.items():
            self.assertEqual(len(lines_of(extracted)), 4, name)

        made = Set()
        for content in damaged(REGISTRY_BYTES):
            made.add(REGISTRY, "", content)
        faulty = {item for item, reason in self.faults_of(made.write(self.folder), 1) if "device accepts" in reason}
        self.assertLessEqual(set(range(1, len(REGISTRY_BYTES) + 1)), faulty, "a cut registry is never sound")

    @unittest.skipIf(SANITIZED, "a sanitizer needs more memory than the limit")
    def test_memory_stays_bounded_whatever_an_image_claims(self):
        """A set of a few megabytes can contain gigabytes of one value."""
        limit = (64 << 20, 64 << 20)
        limited = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_DATA, limit)}
        head = image_bytes("Tasks", 0, [], [[]])[:-2] + b"\1\0" + struct.pack("<I", 0x10041)
        out = self.output_folder()

        def blob(claimed, blocks, rest):
            """Writes a set with one blob. It claims a size, and has this number of full blocks of zeros."""
            stream = pack_stream(head + struct.pack("<I", claimed))[:-7] + packed_zeros() * blocks + pack_stream(rest)[5:]
            return Set().add(DATABASE, "Tasks", stream=stream).write(self.folder)

        done = self.set_tool("verify", blob(0xFFFFFFF0, 2000, b""), code=1, **limited)
        self.assertIn("inside record 1 of 1", done.text)
        done = self.set_tool("extract", blob(2000 * 131072, 2000, b"\0\0"), out, code=1, **limited)
        self.assertIn("16 MiB", done.said)
        self.assertEqual(list(out.iterdir()), [])
        # As text a value takes up to nine times its size, but in memory the program keeps it only once.
        self.set_tool("extract", blob(120 * 131072, 120, b"\0\0"), out, **limited)
        self.assertGreater((out / "Tasks.jsonl").stat().st_size, 2 * 120 * 131072)
        text = image_bytes("Tasks", 0, [], [[(0x1001F, "\ud800" * 4_000_000)]])
        self.set_tool("extract", "--force", Set().add(DATABASE, "Tasks", text).write(self.folder), out, **limited)
        self.assertGreater((out / "Tasks.jsonl").stat().st_size, 6 * 4_000_000)


def packed_zeros():
    """Returns a packed block of 131072 zeros: some literal zeros, then one match of distance 1 that overlaps itself."""
    left = 131072 - 4 - 33
    packed = bytes([21, 0, 0, 0, 0, 32]) + bytes(left // 255) + bytes([left % 255]) + b"\0\0" + bytes.fromhex("110000")
    return struct.pack("<I", len(packed)) + packed
