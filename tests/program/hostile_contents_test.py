"""Databases and registries that nobody should trust: in a set, and as the device's own file."""
import os
import sqlite3
import subprocess
import sys
import unittest

from device_contents import (I2, RESTORE, RESTORE_DATABASES, SET, TEXT, ContentsTest, database, image, independent_set, item,
                             write_set)

OLD = [[item(1, TEXT, "old")]]


class HostileSetTest(ContentsTest):
    def test_damaged_images_cost_no_database_that_exists_and_none_that_follows(self):
        one = database("Victim", [[item(1, I2, 5)], [item(2, TEXT, "whole")]], 7)
        whole = image(one)
        head = len(whole) - len(image({**one, "records": []}))
        images = {"Empty file": b"", "No end of the name": b"\xfe\xff\xff\xff" + whole[4:], "Cut": whole[:-1],
                  "No records": whole[:-head], "Text of 4 GiB": whole.replace(b"\x0c\0\0\0w\0", b"\xfc\xff\xff\xffw\0"),
                  "Sort orders without end": image({**one, "sort": [(1, 0)] * 91}),
                  "Half a character": image({**one, "name": "x"}).replace(b"x\0", b"\0\xd8")}
        existing = [*(database(name, OLD) for name in images), database("Victim", OLD)]
        self.fill(existing)
        last = database("z", [[item(1, TEXT, "whole")]])
        write_set(self.card, [*existing[:-1], last], images)
        told = self.quillbox('answer "Database:*" yes\n' + RESTORE_DATABASES, code=4).stderr
        self.assertIn("7 databases couldn't be restored whole.", told)
        self.assertEqual({name for name in images if f'database "{name}"' in told}, set(images))
        self.assert_holds([*existing, last])
        self.assertEqual(self.content(), {})

    def test_a_hostile_registry_leaves_the_old_one_in_force(self):
        good = independent_set.registry_bytes({"HKEY_USERS\\new": ['"v"="x"']})
        text = good.decode("utf-16")
        hostile = [b"", good[:-1], good[:-2], good[2:], text.encode("utf-8"), good.replace(b"5\0 \0k\0e\0y\0s", b"6\0 \0k\0e\0y\0s"),
                   *(text.replace("[HKEY_USERS\\new]", key).encode("utf-16") for key in (
                       "[HKEY_USERS\\..\\..\\x\\\\0000]", "[HKEY_NONE\\new]", "[HKEY_USERS" + "\\x" * 17 + "]", "[-HKEY_USERS]",
                       "[HKEY_USERS\\" + "n" * 256 + "]", "[" * 200_000)),
                   text.replace('"x"', "hex:" + "00," * 200_000 + "zz").encode("utf-16"),
                   text.replace('"x"', '"' + "x" * (8 << 20) + '"').encode("utf-16")]
        self.quillbox("idle\n")
        self.fill([], '[HKEY_USERS\\old]\r\n"v"="stays"\r\n')
        before = self.registry()
        for number, registry in enumerate(hostile):
            with self.subTest(number=number):
                write_set(self.card, [], registry=registry)
                self.assertIn("the registry", self.quillbox(RESTORE.format(set=SET, answers=""), code=4).stderr)
                self.assertEqual(self.registry(), before)
                self.quillbox("idle\n")
                self.assertEqual(self.registry(), before)
        write_set(self.card, [], registry=good)
        data = self.card / "QUILBOX" / "QLBX0001.QDT"
        data.write_bytes(data.read_bytes()[:-60])
        self.assertIn("the registry (the set is damaged)", self.quillbox(RESTORE.format(set=SET, answers=""), code=4).stderr)
        self.assertEqual(self.registry(), before)
        write_set(self.card, [], registry=good)
        self.restore()
        self.assertEqual(self.registry().decode("utf-16"), text)


class RefusedDeviceTest(ContentsTest):
    """A device.db that can't be used is told in a sentence, and nothing is changed."""

    def setUp(self):
        super().setUp()
        self.fill([database("First", [[item(1, TEXT, f"record {number}")] for number in range(3000)])])
        self.file = self.device / "device.db"

    def state(self):
        return {path.name: path.read_bytes() for path in self.device.iterdir()
                if path.is_file() and path.name != "device.lock"}

    def assert_refused(self, sentence):
        before = self.state()
        said = self.quillbox("idle\n", code=1).stderr
        self.assertIn(sentence, said)
        self.assertIn(str(self.file), said)
        self.assertIn(sentence, self.device_tool("database", "list", self.device, code=1).decode())
        self.assertTrue(self.state() == before, "something was changed")

    def change(self, statement):
        opened = sqlite3.connect(self.file)
        opened.execute(statement)
        opened.commit()
        opened.close()

    def test_damage_anywhere_is_found_before_anything_is_changed(self):
        whole = self.file.read_bytes()
        self.file.write_bytes(b"no database at all" * 100)
        self.assert_refused("is damaged")
        self.file.write_bytes(whole[:len(whole) // 2])
        self.assert_refused("is damaged")
        for page in range(1, len(whole) // 4096, 7):
            with self.subTest(page=page):
                self.file.write_bytes(whole[:page * 4096] + os.urandom(4096) + whole[(page + 1) * 4096:])
                self.assert_refused("is damaged")
        self.file.write_bytes(whole)
        self.quillbox("idle\n")

    def test_another_version_or_another_program_s_database(self):
        self.change("PRAGMA user_version = 99")
        self.assert_refused("newer version")
        self.change("PRAGMA user_version = 2")
        self.change("PRAGMA application_id = 1")
        self.assert_refused("not the database of a Quillbox device")

    def test_a_newer_version_that_was_killed_keeps_its_log(self):
        opened = sqlite3.connect(self.file, isolation_level=None)
        opened.execute("PRAGMA user_version = 99")
        kept = {name: (self.device / name).read_bytes() for name in ("device.db", "device.db-wal")}
        self.assertTrue(kept["device.db-wal"])
        opened.close()
        for name, content in kept.items():
            (self.device / name).write_bytes(content)
        self.assert_refused("newer version")

    def test_a_database_that_another_program_holds(self):
        # In a process of its own: this one drops the lock whenever it looks into the file.
        hold = (f"import sqlite3; held = sqlite3.connect({str(self.file)!r}, isolation_level=None); "
                "held.execute('PRAGMA locking_mode = EXCLUSIVE'); held.execute('BEGIN IMMEDIATE'); print('held', flush=True); input()")
        with subprocess.Popen([sys.executable, "-c", hold], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as holder:
            self.assertEqual(holder.stdout.readline(), b"held\n")
            self.assert_refused("is open in another program")
            holder.stdin.write(b"\n")
        self.quillbox("idle\n")

    def test_things_that_are_no_file(self):
        for make in (os.mkdir, os.mkfifo, lambda path: os.symlink("/nowhere/device.db", path)):
            self.file.unlink()
            make(self.file)
            self.assert_refused("device.db")
            self.file.rmdir() if self.file.is_dir() else self.file.unlink()
            self.file.touch()
        self.assertFalse(any(path.name.startswith("device.db-") for path in self.device.iterdir()))


if __name__ == "__main__":
    unittest.main()
