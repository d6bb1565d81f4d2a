"""Damaged databases and registries: in a set, in the device's own file, and in files at the paths that a run uses."""
import contextlib
import os
import sqlite3
import subprocess
import sys
import unittest

import independent_set
from companions import database, lines
from device_contents import I2, TEXT, ContentsTest, after, image, item, texts
from program import CONFIRM_REGISTRY, DATABASES, FILES, REGISTRY, full_backup, full_restore

YES = 'answer "Database:*" yes\n'


class HostileSetTest(ContentsTest):
    def test_damaged_images_cost_no_database_that_exists_and_none_that_follows(self):
        old = texts("old")
        whole = image(database("Victim", [[item(1, I2, 5)], [item(2, TEXT, "whole")]], 7))
        images = {"Empty file": b"", "Cut": whole[:-1], "No end of the name": b"\xfe\xff\xff\xff" + whole[4:]}
        existing = [database(name, old) for name in [*images, "Victim"]]
        last = database("z", texts("whole"))
        self.fill(*existing)
        self.write_set(*images.items(), last)
        said = self.quillbox(YES + full_restore(), code=4).said
        self.assertIn("3 databases couldn't be restored whole.", said)
        self.assertEqual({name for name in images if f'database "{name}"' in said}, set(images))
        self.assert_holds(*existing, last)
        self.assertEqual(self.content(), {})

    def test_a_damaged_registry_is_reported_and_leaves_the_old_one_in_force(self):
        good = independent_set.registry_bytes({"HKEY_USERS\\new": ['"v"="x"']})
        text = good.decode("utf-16")
        self.quillbox("idle\n")
        self.fill(registry='[HKEY_USERS\\old]\r\n"v"="stays"\r\n')
        before = self.registry()
        for damaged, cut in ((b"", 0), (good[:-2], 0), (text.replace("[HKEY_USERS\\new]", "[-HKEY_USERS]").encode("utf-16"), 0),
                             (good, 60)):
            with self.subTest(damaged=damaged, cut=cut):
                data = self.write_set(registry=damaged).with_suffix(".QDT")
                os.truncate(data, data.stat().st_size - cut)
                said = self.quillbox(full_restore(CONFIRM_REGISTRY), code=4).said
                self.assertRegex(said, r"couldn't be restored whole: the registry \(.*damaged")
                self.assertEqual(self.registry(), before)
                self.quillbox("idle\n")
                self.assertEqual(self.registry(), before)
        self.assertTrue((self.device / "registry.refused").exists())
        self.write_set(registry=good)
        self.restore()
        self.assertEqual(self.registry().decode("utf-16"), text)


class FilesInTheWayTest(ContentsTest):
    """Files with the names that a run uses for a moment: left by a run that was killed, or the user's own."""

    def test_whole_records_of_a_cut_stream_come_back_over_an_old_image_which_is_reported(self):
        many = database("Big", texts(*(f"{number:0400}" for number in range(300))))
        for stale in (False, True):
            with self.subTest(stale=stale):
                self.fill()
                os.truncate(self.write_set(many).with_suffix(".QDT"), len(independent_set.pack_stream(image(many))) - 20)
                if stale:
                    self.write("Big.CDB", b"of a killed run")
                said = self.quillbox(YES + full_restore(), code=4).said
                self.assertIn('couldn\'t be restored whole: database "Big" (the set is damaged)', said)
                self.assertEqual("and was replaced: \"\\Big.CDB\"" in said, stale)
                self.assertEqual(self.content(), {})
                found = self.exported().splitlines()[1:]
                self.assertGreater(len(found), 100)
                self.assertEqual(found, lines(*after(1, [many])).splitlines()[1:len(found) + 1])
                (self.device / "device.db").unlink()

    def test_whole_records_of_a_damaged_database_are_stored_over_an_old_image(self):
        self.fill(database("b", texts("first", "second")))
        with contextlib.closing(sqlite3.connect(self.device / "device.db")) as opened, opened:
            opened.execute("UPDATE store_record SET properties = x'ff' WHERE oid = (SELECT max(oid) FROM store_record)")
        self.write("b.CDB", b"of a killed run")
        self.quillbox(full_backup(DATABASES), code=4)
        self.assertEqual(self.content(), {})
        self.restore(before=YES, registry=False)
        self.assert_holds(database("b", texts("first")))

    def test_a_restored_file_with_the_name_of_an_image_stays(self):
        self.fill(database("Target", texts("first")))
        self.write("Target.CDB", b"the user's")
        # The set of the files first, then one of the databases, whose image takes the file's place; then it comes back.
        backups = 'answer "Override*" no\n' + full_backup(FILES) + full_backup(DATABASES)
        said = self.quillbox(backups + full_restore(), code=4).said
        self.assertIn('was replaced: "\\Target.CDB"', said)
        for _ in range(2):
            self.assertEqual(self.content(), {b"Target.CDB": b"the user's"})
            self.quillbox("idle\n")

    def test_a_file_of_the_user_is_not_stored_as_the_registry(self):
        mine = self.write("TMVRegFile.QBR", b"mine")
        mine.chmod(0o444)
        self.quillbox(full_backup(REGISTRY), code=4)
        self.assertEqual(mine.read_bytes(), b"mine")
        self.assertEqual(self.items(), {})


class RefusedDeviceTest(ContentsTest):
    """A device.db that can't be used is refused with a sentence, and nothing is changed."""

    def setUp(self):
        super().setUp()
        self.fill(database("First", texts(*(f"record {number}" for number in range(3000)))))
        self.file = self.device / "device.db"
        self.whole = self.file.read_bytes()

    def state(self):
        return {path.name: path.read_bytes() for path in self.device.iterdir()
                if path.is_file() and path.name != "device.lock"}

    def assert_refused(self, sentence):
        before = self.state()
        said = self.quillbox("idle\n", code=1).said
        self.assertIn(sentence, said)
        self.assertIn(str(self.file), said)
        self.assertIn(sentence, self.device_tool("database", "list", self.device, code=1).said)
        self.assertTrue(self.state() == before, "something was changed")

    def changed(self, *statements):
        """The sound database after these statements, with its log as a process leaves it that is killed now."""
        self.file.write_bytes(self.whole)
        with contextlib.closing(sqlite3.connect(self.file, isolation_level=None)) as opened:
            for statement in statements:
                opened.execute(statement)
            return {name: (self.device / name).read_bytes() for name in ("device.db", "device.db-wal")}

    def test_damage_and_files_of_other_versions_and_programs_are_refused(self):
        page = 5 * 4096
        logged = self.changed("PRAGMA user_version = 99")
        self.assertTrue(logged["device.db-wal"])
        foreign = self.changed("PRAGMA application_id = 1", "PRAGMA wal_checkpoint")["device.db"]
        for files, sentence in (({"device.db": b"no database at all" * 100}, "is damaged"),
                                ({"device.db": self.whole[:len(self.whole) // 2]}, "is damaged"),
                                ({"device.db": self.whole[:page] + os.urandom(4096) + self.whole[page + 4096:]}, "is damaged"),
                                ({"device.db": foreign}, "not the database of a Quillbox device"),
                                (logged, "newer version")):
            with self.subTest(sentence=sentence, sizes={name: len(content) for name, content in files.items()}):
                for name, content in files.items():
                    (self.device / name).write_bytes(content)
                self.assert_refused(sentence)

    def test_a_database_that_another_program_holds_is_refused_until_it_lets_go(self):
        # In another process: this one drops the lock whenever it reads the file.
        hold = (f"import sqlite3; held = sqlite3.connect({str(self.file)!r}, isolation_level=None); "
                "held.execute('PRAGMA locking_mode = EXCLUSIVE'); held.execute('BEGIN IMMEDIATE'); "
                "print('held', flush=True); input()")
        with subprocess.Popen([sys.executable, "-c", hold], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as holder:
            self.assertEqual(holder.stdout.readline(), b"held\n")
            self.assert_refused("is open in another program")
            holder.stdin.write(b"\n")
        self.quillbox("idle\n")

    def test_what_is_no_file_is_refused(self):
        for make in (os.mkdir, os.mkfifo, lambda path: os.symlink("/nowhere/device.db", path)):
            self.file.unlink()
            make(self.file)
            self.assert_refused("device.db")
            self.file.rmdir() if self.file.is_dir() else self.file.unlink()
            self.file.touch()
        self.assertFalse(any(path.name.startswith("device.db-") for path in self.device.iterdir()))


if __name__ == "__main__":
    unittest.main()
