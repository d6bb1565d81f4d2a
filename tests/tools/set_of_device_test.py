#!/usr/bin/env python3
"""A device and the set that a backup makes of it tell the same: what quillbox-set takes out is what quillbox-device exports."""
import json
import pathlib
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "program"))
from program import BIN, ProgramTest

BACKUP = """command 40003
wait "Full Backup"
uncheck 1005
check 1006
check 1007
ok
wait "Select"
select 1003 "Main device"
ok
idle
"""
VALUES = [{"id": "0001001f", "value": "Grüße, 😀 \"quoted\"\r\n"}, {"id": "0002001f", "units": [0xD800, 0x41]},
          {"id": "0003001f", "value": ""}, {"id": "00010002", "value": -32768}, {"id": "00020012", "value": 65535},
          {"id": "00030003", "value": -2147483648}, {"id": "00040013", "value": 4294967295},
          {"id": "00060040", "value": 18446744073709551615}, {"id": "00010041", "value": ""},
          {"id": "00020041", "flags": 0xFCFF, "value": "00ff" * 100000}]
MANY = [{"id": f"{number:04x}0013", "value": number} for number in range(1, 700)]
UNKEPT = [{"id": "0001000b", "value": 1}, {"id": "00020005", "value": 0.5}, {"id": "00030063", "bits": "0123456789abcdef"}]
UNKEPT_IN_SET = [{"id": "0001000b", "value": 0}, {"id": "00020005", "value": 0.0}, {"id": "00030063", "bits": "0" * 16}]
REGISTRY = ("\ufeffWindows Registry Editor Version 5.00\r\n\r\n[HKEY_USERS\\a\\\\000db]\r\n@=\"\"\r\n\"q\\\"\r\n\"=hex(7):61,00\r\n"
            "\"big\"=hex:" + ",".join(["5a"] * 200000) + "\r\n")


def database(name, records, kind=7, sort=((0, 0),)):
    lines = [{"database": name, "type": kind, "sort": [dict(property=number, flags=flags) for number, flags in sort]}]
    lines += [{"record": record} for record in records]
    return "".join(json.dumps(line, ensure_ascii=False, separators=(",", ":")) + "\n" for line in lines)


class SetOfDeviceTest(ProgramTest):
    def device_tool(self, *arguments, given=None):
        return subprocess.run([BIN / "quillbox-device", *arguments], input=given, capture_output=True, check=True).stdout

    def taken_out(self, device):
        """The files that the device's set gives, and what the device held when it was made."""
        self.quillbox("idle\n", device=device)  # the program stores its options when it ends
        self.held = {what: self.device_tool(what, "export", device) for what in ("database", "registry")}
        self.quillbox(BACKUP, device=device)
        files = device / "object-store" / "QUILBOX" / "QLBX0001"
        self.assertIn("Sound", self.set_tool("verify", files))
        out = self.base / "out"
        self.set_tool("extract", files, out)
        return {path.name: path.read_bytes() for path in out.iterdir()}

    def assert_the_same(self, device, found, names):
        self.assertEqual(sorted(found), sorted([*names.values(), "registry.reg"]))
        for name, file in names.items():
            exported = self.device_tool("database", "export", device, "--name", name)
            self.assertEqual(found[file].decode().splitlines(), exported.decode().splitlines(), name)
        self.assertEqual(found["registry.reg"].decode("utf-16"), self.held["registry"].decode("utf-16"))

    def test_a_new_devices_own_content_is_the_same_in_its_set(self):
        device = self.base / "new"
        found = self.taken_out(device)
        listed = self.device_tool("database", "list", device).decode().splitlines()
        names = [line.removeprefix("database ").rsplit(": type ", 1)[0] for line in listed]
        self.assertGreaterEqual(len(names), 3)
        self.assert_the_same(device, found, {name: name + ".jsonl" for name in names})
        for form, ending, forms_names in (("vcard", ".vcf", ["Contacts Database"]), ("csv", ".csv", names),
                                          ("ical", ".ics", ["Appointments Database", "Tasks Database"])):
            for name in forms_names:
                self.set_tool("extract", "--form", form, device / "object-store" / "QUILBOX" / "QLBX0001", self.base / "out",
                              name)
                exported = self.device_tool("database", "export", device, "--name", name, "--form", form)
                self.assertEqual((self.base / "out" / (name + ending)).read_bytes().decode(), exported.decode())

    def test_every_kind_of_value_name_and_order_is_the_same_in_a_set(self):
        made = database("All kinds", [VALUES, VALUES[3:5], MANY], 4294967295, [(0x1001F, 2), (0x20003, 5)])
        made += database("Пустая", []) + database("Numbers", [[{"id": "00010003", "value": n}] for n in range(20000)])
        self.device_tool("database", "import", self.device, "-", given=made.encode())
        (self.base / "in.reg").write_bytes(REGISTRY.encode("utf-16-le"))
        self.device_tool("registry", "import", self.device, self.base / "in.reg")
        found = self.taken_out(self.device)
        self.assert_the_same(self.device, found,
                             {"All kinds": "All kinds.jsonl", "Пустая": "Пустая.jsonl", "Numbers": "Numbers.jsonl"})

        fresh = self.base / "fresh"
        self.device_tool("init", fresh)
        for name in ("All kinds.jsonl", "Пустая.jsonl", "Numbers.jsonl"):
            self.device_tool("database", "import", fresh, self.base / "out" / name)
        self.device_tool("registry", "import", fresh, self.base / "out" / "registry.reg")
        for what, held in self.held.items():
            self.assertEqual(self.device_tool(what, "export", fresh), held)

    def test_values_that_an_image_does_not_keep_are_the_only_ones_that_differ(self):
        self.device_tool("database", "import", self.device, "-", given=database("d", [VALUES, UNKEPT]).encode())
        self.assertEqual(self.taken_out(self.device)["d.jsonl"].decode(), database("d", [VALUES, UNKEPT_IN_SET]))


if __name__ == "__main__":
    unittest.main()
