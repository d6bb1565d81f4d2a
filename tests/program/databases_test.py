"""Databases and the registry of a whole device, into a set and back."""
import shutil
import sqlite3
import struct
import unittest

from program import FULL_RESTORE, ProgramTest, shown

BACKUP = """command 40003
wait "Full Backup"
uncheck 1005
check 1006
check 1007
ok
wait "Select"
select 1003 "{storage}"
ok
idle
"""
SET = "\\Card\\QUILBOX\\QLBX0001.QLT"
NOTICE = ("I have restored the registry, to activate the registry restoration you have to do a device warm reboot, follow "
          "your compagnion instructions")
RESTORE = FULL_RESTORE.format(set=SET).replace("idle", f'wait "Restore"\nexpect text "*{NOTICE}"\nok\nidle')
DATABASES = ["Appointments Database", "Contacts Database", "Tasks Database"]


def records(image):
    """The records of a database image in its order, each a tuple of (id, value, flags)."""
    at = 0

    def take(form):
        nonlocal at
        value, = struct.unpack_from("<" + form, image, at)
        at += struct.calcsize("<" + form)
        return value

    take(f"{take('I')}s")  # the name
    take("I")  # the type
    count = take("H")
    take(f"{8 * take('H')}s")  # the sort orders
    found = []
    for _ in range(count):
        properties = []
        for _ in range(take("H")):
            identifier = take("I")
            form = {2: "2s", 18: "2s", 3: "4s", 19: "4s", 64: "8s"}.get(identifier & 0xFFFF)
            if identifier & 0xFFFF in (31, 65):
                form = f"{take('I')}s"
            properties.append((identifier, take(form) if form else b"", take("H")))
        found.append(tuple(properties))
    assert at == len(image)
    return found


class DatabasesTest(ProgramTest):
    """A demonstration device beside the empty one."""

    def setUp(self):
        super().setUp()
        self.full = self.base / "full"
        self.quillbox(BACKUP.format(storage="\\Storage Card"), device=self.full)
        made = self.full / "cards" / "Storage Card" / "QUILBOX"
        self.before = self.extracted(made / "QLBX0001")
        shutil.copytree(made, self.card / "QUILBOX")

    def extracted(self, files):
        """Database images by name, and the registry's text."""
        self.assertIn("Sound", self.set_tool("verify", files))
        folder = self.base / "extracted"
        shutil.rmtree(folder, ignore_errors=True)
        self.set_tool("extract", "--raw", files, folder)
        found = {path.name: path.read_bytes() for path in folder.rglob("*") if path.is_file()}
        registry = [name for name in found if name.startswith("registry")]
        self.assertEqual(len(registry), 1, sorted(found))
        return ({name.rsplit(".", 1)[0]: content for name, content in found.items() if name not in registry},
                found[registry[0]].decode("utf-16"))

    def back_up_again(self, before=""):
        """Saves what the second device holds now, after the lines `before`."""
        self.quillbox(before + BACKUP.format(storage="Main device"))
        made = self.extracted(self.store / "QUILBOX" / "QLBX0001")
        shutil.rmtree(self.store / "QUILBOX")
        return made

    def messages(self, script):
        lines = shown(self.quillbox(script).transcript, "window")
        return [line for line in lines if line.startswith("window message")]

    def test_they_come_back_into_an_empty_device_and_the_registry_at_its_next_start(self):
        images, registry = self.before
        self.assertEqual(sorted(images), DATABASES)
        self.assertGreaterEqual(min(len(records(image)) for image in images.values()), 10)
        self.assertIn('[HKEY_CURRENT_USER\\ControlPanel\\Owner]\r\n"Name"="Robin Vähä"\r\n', registry)

        restored, unchanged = self.back_up_again(RESTORE)
        for name in DATABASES:
            # A dump goes from the last record to the first, so that each trip turns the order around.
            self.assertEqual(records(restored[name]), records(images[name])[::-1], name)
        self.assertNotIn("Robin", unchanged)
        self.assertEqual(sorted(path.name for path in self.store.iterdir()), [])
        self.assertEqual(self.back_up_again()[1], registry)
        self.assertEqual(sorted(path.name for path in self.device.glob("registry*")), [])

    def test_into_an_empty_device_only_the_notice_is_shown(self):
        self.assertEqual(self.messages(RESTORE),
                         [f'window message "Restore" text "{NOTICE}" buttons ok default ok'])

    def test_databases_that_exist_are_asked_for_and_stay_unless_yes(self):
        self.quillbox(RESTORE)
        with sqlite3.connect(self.device / "device.db") as database:
            database.execute("PRAGMA foreign_keys = ON")
            database.execute("DELETE FROM store_record WHERE oid % 2 = 0")
        database.close()
        cut = {name: records(image) for name, image in self.back_up_again()[0].items()}
        asked = self.messages(RESTORE.replace('wait "Restore"', 'key "Enter"\n' * 3 + 'wait "Restore"'))
        self.assertEqual([line.split(" text ")[1] for line in asked[:-1]],
                         [f'"Database:{name} exists replace ?" buttons yes,no default no'
                          for name in ("Contacts Database", "Appointments Database", "Tasks Database")])
        self.assertEqual({name: records(image) for name, image in self.back_up_again()[0].items()}, cut)

        self.messages('answer "Database:T*" no\nanswer "Database:*exists replace ?" yes\n' + RESTORE)
        after = {name: records(image) for name, image in self.back_up_again()[0].items()}
        whole = {name: records(image)[::-1] for name, image in self.before[0].items()}
        self.assertEqual(after, {**whole, "Tasks Database": cut["Tasks Database"]})
        self.assertNotEqual(after, whole)

    def test_a_damaged_registry_in_a_set_leaves_the_registry_as_it_was(self):
        data = self.card / "QUILBOX" / "QLBX0001.QDT"
        self.quillbox("idle\n")  # which leaves its options there
        _, before = self.back_up_again()
        content = data.read_bytes()
        data.write_bytes(content[:-60])  # the registry is the last item: its last block is cut
        told = self.quillbox(RESTORE, code=4).stderr
        self.assertIn("couldn't be restored whole: the registry (the set is damaged)", told)
        self.assertEqual(self.back_up_again()[1], before)
        self.assertTrue((self.device / "registry.refused").exists())


if __name__ == "__main__":
    unittest.main()
