"""Trouble from outside: devices that can't be opened, full cards, sets from elsewhere, and how the process ends."""
import contextlib
import os
import sqlite3
import subprocess
import unittest

from device_contents import (BACKUP, RESTORE, RESTORE_DATABASES, SET, TEXT, ContentsTest, after, database, independent_set, item,
                             lines, write_set)
from host_trouble import unwritable_outputs
from program import BIN, FULL_BACKUP, FULL_RESTORE, ProgramTest, options_script


class TroubleTest(ProgramTest):
    def test_device_in_use_is_refused_with_a_sentence(self):
        first = subprocess.Popen([BIN / "quillbox", "--device", self.device, "--script", "-"], stdin=subprocess.PIPE,
                                 stdout=subprocess.PIPE, text=True)
        try:
            # It reads its whole script before it starts, so its end is what shows that it has the device.
            first.stdin.write('command 40011\nwait "Options"\nprint text\nwait "never"\n')
            first.stdin.close()
            self.assertIn("Options", first.stdout.readline())
            second = self.quillbox("idle\n", code=1)
            self.assertIn("open in another Quillbox", second.stderr)
            self.assertIn(str(self.device), second.stderr)
        finally:
            first.kill()
            first.wait()
            first.stdout.close()
        self.quillbox("idle\n")

    def test_folders_that_are_no_device_are_left_alone(self):
        documents = self.base / "documents"
        documents.mkdir()
        (documents / "letter.txt").write_text("mine")
        refused = self.quillbox("idle\n", device=documents, code=1)
        self.assertIn(str(documents), refused.stderr)
        self.assertEqual(os.listdir(documents), ["letter.txt"])
        (self.base / "file").write_text("no folder")
        self.quillbox("idle\n", device=self.base / "file", code=1)
        self.quillbox("idle\n", device=self.base / "file" / "below", code=1)

    def test_usage_is_told(self):
        for arguments in (["--card", "nothing"], ["--card", "C=/nowhere"], ["--unknown"],
                          ["--card", f"C={self.card},capacity=many"], ["--card", f"..={self.card}"]):
            finished = subprocess.run([BIN / "quillbox", "--device", self.device, *arguments, "--script", "-"],
                                      input="idle\n", capture_output=True, text=True)
            self.assertIn(finished.returncode, (1, 2), arguments)
            self.assertTrue(finished.stderr.strip(), arguments)
        self.assertIn("line 2", self.quillbox("idle\nfly\n", code=2).stderr)
        failed = self.quillbox('idle\ncommand 40009\nexpect text "nothing like it"\n', code=1)
        self.assertIn("line 3", failed.stderr)
        self.assertIn("Quillbox v1.0", failed.stderr)

    def test_standard_streams_that_are_closed_or_full_are_told_and_never_a_file_of_the_device(self):
        start = [BIN / "quillbox", "--device", self.device, "--script"]
        script = self.base / "script"
        script.write_text("idle\n")
        self.quillbox("idle\n")
        for name, output in unwritable_outputs():
            for command in ([*start, script, "--transcript", "-"], [BIN / "quillbox", "--help"], [BIN / "quillbox", "--version"]):
                with self.subTest(output=name, command=command):
                    done = subprocess.run(command, stderr=subprocess.PIPE, **output)
                    self.assertEqual((done.returncode, done.stderr), (1, b"quillbox: standard output can't be written.\n"))
            self.assertEqual(subprocess.run([*start, script], **output).returncode, 0, "nothing was to be shown")
        done = subprocess.run([*start, script, "--transcript", "/dev/full"], capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (1, b"quillbox: the transcript \"/dev/full\" can't be written.\n"))
        done = subprocess.run([*start, "-"], capture_output=True, preexec_fn=lambda: os.close(0))
        self.assertEqual((done.returncode, done.stderr), (2, b"the script can't be read\n"))
        self.assertEqual((self.device / "device.lock").read_text(), "database\n")

    def test_without_a_home_the_device_needs_a_name(self):
        for places in ({}, {"HOME": ""}, {"HOME": "home", "XDG_DATA_HOME": "data"}):
            done = subprocess.run([BIN / "quillbox", "--script", "-"], input=b"idle\n", capture_output=True, cwd=self.base, env=places)
            self.assertEqual(done.returncode, 2, places)
            self.assertIn(b"--device DIR names one", done.stderr)
        self.assertEqual(os.listdir(self.base), ["device"])

    def test_full_card_keeps_every_source(self):
        for number in range(50):
            self.write(f"file{number}", os.urandom(2000))
        before = self.content()
        card = self.base / "stick"
        card.mkdir()
        told = self.quillbox(options_script(log=True, delete=True) + FULL_BACKUP.format(comment="", storage="\\Stick"),
                             "--card", f"Stick={card},capacity=40000", code=4).stderr
        self.assertIn("the disk is full", told)
        left = self.content()
        self.assertTrue(0 < len(left) < 50, "some fitted, some didn't")
        self.assertLessEqual(sum(p.stat().st_size for p in card.rglob("*") if p.is_file()), 40_000)
        self.quillbox(options_script(policy=1024) + FULL_RESTORE.format(set="\\Stick\\QUILBOX\\QLBX0001.QLT"), "--card",
                      f"Stick={card}")
        self.assertEqual(self.content(), before)

    def test_what_is_in_use_is_left_out_and_told(self):
        for name in ("free", "busy", "busy too"):
            self.write(name, b"content")
        with open(self.store / "busy", "ab"), open(self.store / "busy too", "ab"):
            told = self.quillbox(FULL_BACKUP.format(comment="", storage="\\Card"), code=4).stderr
        self.assertRegex(told, r"^quillbox: 2 files aren't in the set, or not whole\. The first is .*busy.* "
                               r"\(another program uses it\)\.\nquillbox: .*busy.*\n$")
        self.assertEqual(self.set_tool("verify", self.card / "QUILBOX" / "QLBX0001"), "Sound: 1 item.\n")

    def test_folder_that_cannot_be_entered_is_told(self):
        self.write("shut/a", b"a")
        self.write("b", b"b")
        (self.store / "shut").chmod(0o444)
        self.addCleanup((self.store / "shut").chmod, 0o755)
        if os.geteuid() == 0:
            for folder in (self.base, *self.base.rglob("*")):
                os.chown(folder, 65534, 65534)
            user = {"user": 65534, "group": 65534, "extra_groups": []}
        else:
            user = {}
        told = self.quillbox(FULL_BACKUP.format(comment="", storage="\\Card"), code=4, **user).stderr
        self.assertIn('"\\shut\\a" (no permission, or it is read-only)', told)
        # A search for sets meets the folder too, and what is restored doesn't lie in it.
        self.quillbox(options_script(policy=1023) + FULL_RESTORE.format(set="\\Card\\QUILBOX\\QLBX0001.QLT"), **user)

    def test_what_is_made_is_its_owners_whatever_the_mask(self):
        self.write("small", b"small")
        self.addCleanup(os.umask, os.umask(0o777))
        self.quillbox(FULL_BACKUP.format(comment="", storage="\\Card"))
        for made in [*(self.card / "QUILBOX").iterdir(), self.device / "device.db"]:
            self.assertEqual(made.stat().st_mode & 0o777, 0o600, made)
        self.set_tool("extract", self.card / "QUILBOX" / "QLBX0001", self.base / "out")
        self.assertEqual([path.stat().st_mode & 0o777 for path in (self.base / "out", self.base / "out" / "small")], [0o700, 0o600])

    def test_folder_of_the_user_is_backed_up_and_restored_in_place(self):
        documents = self.base / "documents"
        (documents / "deep").mkdir(parents=True)
        (documents / "deep" / "letter").write_text("dear")
        os.symlink("/etc/hostname", documents / "link")
        folder = ["--folder", f"Documents={documents}"]
        self.quillbox(FULL_BACKUP.format(comment="", storage="\\Card"), *folder)
        (documents / "deep" / "letter").unlink()
        self.quillbox(FULL_RESTORE.format(set="\\Card\\QUILBOX\\QLBX0001.QLT"), *folder)
        self.assertEqual((documents / "deep" / "letter").read_text(), "dear")
        self.assertEqual(self.set_tool("list", self.card / "QUILBOX" / "QLBX0001").count("link"), 0)

    def test_ninety_nine_sets_are_offered_and_a_hundredth_is_not_made(self):
        self.write("a", b"a")
        self.quillbox(FULL_BACKUP.format(comment="", storage="\\Card"))
        sets = self.card / "QUILBOX"
        for number in range(2, 100):
            for ending in ("QLT", "QDT"):
                (sets / f"QLBX{number:04d}.{ending}").write_bytes((sets / f"QLBX0001.{ending}").read_bytes())
        before = {p.name: p.read_bytes() for p in sets.iterdir()}
        finished = self.quillbox('answer "Override*" no\n' + FULL_BACKUP.format(comment="", storage="\\Card") +
                                 'command 40006\nwait "Select"\nprint 1003\ncancel\nidle\n', code=4)
        self.assertIn('No set was made in "\\Card\\QUILBOX": the numbers 1 to 99 are all taken.', finished.stderr)
        self.assertEqual(len(finished.stdout.split()), 99)
        self.assertEqual({p.name: p.read_bytes() for p in sets.iterdir()}, before)


DAMAGED = r"\(it is damaged, or the disk failed\)"
KEYS = "INSERT INTO registry_key (id, parent, name, folded) VALUES "


class DamagedStoreTest(ContentsTest):
    """What of databases and the registry gets into no set, though the program passes over it."""

    def setUp(self):
        super().setUp()
        self.fill([database("First", [[item(1, TEXT, "1")]]), database("Second", [[item(1, TEXT, "2")]])])
        self.quillbox("idle\n")
        self.sound = (self.device / "device.db").read_bytes()

    def damage(self, sql):
        (self.device / "device.db").write_bytes(self.sound)
        with contextlib.closing(sqlite3.connect(self.device / "device.db", isolation_level=None)) as opened:
            opened.execute("PRAGMA legacy_alter_table = ON")
            opened.executescript(sql)

    def test_what_the_store_cannot_give_is_told(self):
        deep = ",".join(f"({100 + level}, {99 + level if level else 4}, 'k', 'k')" for level in range(17))
        for sql, told, stored in (
                ("UPDATE store_record SET properties = x'0102030405' WHERE database = 1", f'database "First" {DAMAGED}', 3),
                ("UPDATE store_record SET properties = x'01'", rf'^quillbox: 2 databases .* is database ".*" {DAMAGED}', 3),
                ("UPDATE store_database SET folded = 'else' WHERE name = 'First'", f'database "First" {DAMAGED}', 2),
                ("DROP TABLE store_sort_order", f"the list of databases {DAMAGED}", 1),
                ("ALTER TABLE store_database RENAME TO gone", f"the list of databases {DAMAGED}", 1),
                ("UPDATE store_database SET records = 2 WHERE name = 'First'", f'database "First" {DAMAGED}', 3),
                (KEYS + deep, f"the registry {DAMAGED}", 2)):
            with self.subTest(sql=sql):
                self.damage(sql)
                said = self.quillbox('answer "Override*" yes\n' + BACKUP.format(storage="\\Card"), code=4).stderr
                self.assertRegex(said, told + r"\.\n")
                self.assertIn(f"Sound: {stored} item", self.set_tool("verify", self.card / "QUILBOX" / "QLBX0001"))

    def test_what_of_a_damaged_database_is_stored_has_its_error_line_between_start_and_end(self):
        self.damage("UPDATE store_record SET properties = x'01' WHERE database = 1")
        self.quillbox(options_script(log=True) + BACKUP.format(storage="\\Card"), code=4)
        log = (self.card / "QUILBOX" / "BACKUP0001.LOG").read_text()
        self.assertEqual([line.split(": ", 1)[1] for line in log.splitlines() if "First" in line],
                         ["INF: Start Database backup: First ", "ERR: Database backup: First ",
                          "INF: End Database backup: First "])

    def test_what_stands_in_the_tables_is_never_passed_over(self):
        self.damage("DROP TABLE store_sort_order")
        self.assertIn(b"can't be read", self.device_tool("database", "list", self.device, code=1))
        self.damage("UPDATE store_database SET folded = 'else' WHERE name = 'First'")
        self.assertIn(b'"First" can\'t be read', self.device_tool("database", "export", self.device, "--name", "First", code=1))
        self.damage("UPDATE store_database SET records = 2 WHERE name = 'First'")
        self.assertIn(b'"First" can\'t be read', self.device_tool("database", "export", self.device, code=1))
        self.damage("DROP TABLE remembered_folder")
        self.assertIn("device remembers can't be read", self.quillbox("idle\n", code=1).stderr)

    def test_a_name_that_is_a_path_into_no_folder_is_told(self):
        names = ["a\\b", "\\sys"]
        imported = subprocess.run([BIN / "quillbox-device", "database", "import", self.device, "-"], capture_output=True,
                                  input=lines([database(name, []) for name in [*names, "c"]]).encode(), check=True)
        self.assertEqual([line.split(b'"')[1].decode() for line in imported.stderr.splitlines()], names)
        told = self.quillbox(BACKUP.format(storage="\\Card"), code=4).stderr
        self.assertRegex(told, r'^quillbox: This isn\'t in the set, or not whole: database "a\\b" \(there is no folder for it\)\.\n')
        # One that comes in time, as for a restored file, is no trouble; one that can't is.
        write_set(self.card, [database("a\\b", [[item(1, TEXT, "came")]])])
        self.damage("DELETE FROM store_database WHERE name = 'a\\b'")
        self.quillbox(RESTORE_DATABASES)
        self.assertIn("came", self.databases())
        self.assertEqual(os.listdir(self.store), [], "the folder of the image stays")
        self.write("a")
        self.assertIn("a\\b.CDB", self.quillbox(RESTORE_DATABASES, code=4).stderr)


class FullDeviceTest(ContentsTest):
    """The device's own disk has room for little. Its files lie on another one, as does the card with the set."""

    def setUp(self):
        super().setUp()
        self.quillbox("idle\n")
        kept = {path.name: path.read_bytes() for path in self.device.iterdir() if path.is_file()}
        self.mount(self.device, "size=4m")
        self.mount(self.store, "size=64m")
        for name, content in kept.items():
            (self.device / name).write_bytes(content)
        self.stick = self.base / "stick"
        self.stick.mkdir()

    def mount(self, folder, options):
        folder.mkdir(exist_ok=True)
        if subprocess.run(["mount", "-t", "tmpfs", "-o", options, "none", folder], capture_output=True).returncode:
            self.skipTest("mounting a file system needs the administrator")
        self.addCleanup(subprocess.run, ["umount", folder], check=True)

    def restore_with_room_for(self, left, script):
        """What standard error says."""
        status = os.statvfs(self.device)
        (self.device / "filler").write_bytes(bytes(status.f_bavail * status.f_bsize - left))
        told = self.quillbox(script.replace("\\Card", "\\Stick"), "--card", f"Stick={self.stick}", code=4).stderr
        (self.device / "filler").unlink()
        return told

    def test_records_that_find_no_room_are_told_and_the_others_are_there(self):
        big = database("Big", [[item(1, TEXT, f"{number:0300}")] for number in range(3000)])
        write_set(self.stick, [big])
        told = self.restore_with_room_for(400_000, RESTORE_DATABASES)
        self.assertRegex(told, r'^quillbox: This couldn\'t be restored whole: database "Big" \(the disk is full\)\.\n$')
        found = self.databases().splitlines()
        rest = iter(lines(after(1, [big])).splitlines())
        self.assertTrue(all(line in rest for line in found), "a record is in the wrong place or another one")
        self.assertTrue(200 < len(found) < 3001, len(found))

    def test_a_database_that_finds_no_room_leaves_the_one_that_it_would_replace(self):
        old = database("Big", [[item(1, TEXT, "old")]])
        self.fill([old])
        write_set(self.stick, [database("Big", [[item(1, TEXT, f"{number:0300}")] for number in range(3000)])])
        told = self.restore_with_room_for(400_000, 'answer "Database:*" yes\n' + RESTORE_DATABASES)
        self.assertIn('database "Big" (the disk is full)', told)
        self.assert_holds([old])

    def test_a_registry_that_finds_no_room_is_told(self):
        before = self.registry()
        write_set(self.stick, [], registry=independent_set.registry_bytes({"HKEY_USERS\\new": [f'"v"="{"x" * 500_000}"']}))
        told = self.restore_with_room_for(400_000, RESTORE.format(set=SET, answers=""))
        self.assertRegex(told, r"restored whole: the registry \(the disk is full\)\.\n$")
        self.quillbox("idle\n")
        self.assertEqual(self.registry(), before)

    def test_what_keeps_a_folder_from_being_made_is_the_reason_that_is_told(self):
        self.write("a", b"a")
        self.mount(self.stick, "ro")
        script = 'answer "Override*" no\n' + FULL_BACKUP.format(comment="", storage="\\Stick")
        told = self.quillbox(script, "--card", f"Stick={self.stick}", code=4).stderr
        self.assertEqual(told, 'quillbox: No set was made in "\\Stick\\QUILBOX": the disk can\'t be written.\n')


if __name__ == "__main__":
    unittest.main()
