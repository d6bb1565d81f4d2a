"""Trouble from outside: devices that can't be opened, full cards, sets from elsewhere, and how the process ends."""
import contextlib
import os
import sqlite3
import subprocess
import unittest

import independent_set
from companions import BIN, database, lines, names_in
from device_contents import TEXT, ContentsTest, after, item, texts
from host_trouble import unwritable_outputs
from program import CONFIRM_REGISTRY, DATABASES, REGISTRY, ProgramTest, full_backup, full_restore, options_script

NO_OVERRIDE = 'answer "Override*" no\n'


class StartTest(ProgramTest):
    def test_device_in_use_is_refused_with_a_sentence(self):
        # It reads its whole script before it starts, so what it prints shows that it has the device.
        script = self.file("script", 'command 40011\nwait "Options"\nprint text\nwait "never"\n')
        with subprocess.Popen([BIN / "quillbox", "--device", self.device, "--script", script], stdout=subprocess.PIPE) as first:
            try:
                self.assertIn(b"Options", first.stdout.readline())
                said = self.quillbox("idle\n", code=1).said
            finally:
                first.kill()
        self.assertIn("open in another Quillbox", said)
        self.assertIn(str(self.device), said)
        self.quillbox("idle\n")

    def test_what_is_no_device_is_refused_and_left_alone(self):
        documents = self.folder / "documents"
        documents.mkdir()
        letter = self.file("documents/letter", "mine")
        for no_device in (documents, letter, letter / "below"):
            self.assertIn(str(no_device), self.quillbox("idle\n", device=no_device, code=1).said)
        for places in ({}, {"HOME": ""}, {"HOME": "home", "XDG_DATA_HOME": "data"}):
            done = self.run_program("quillbox", "--script", "-", given="idle\n", cwd=documents, env=places, code=2)
            self.assertIn("Name one with --device DIR", done.said)
        self.assertEqual(names_in(documents), ["letter"])

    def test_bad_usage_is_reported(self):
        for code, arguments in ((2, ["--card", "nothing"]), (1, ["--card", "C=/nowhere"]), (2, ["--unknown"]),
                                (2, ["--card", f"C={self.card},capacity=many"]), (1, ["--card", f"..={self.card}"])):
            with self.subTest(arguments):
                self.assertNotEqual(self.quillbox("idle\n", *arguments, code=code).said, "")
        self.assertIn("line 2", self.quillbox("idle\nfly\n", code=2).said)
        failed = self.quillbox('idle\ncommand 40009\nexpect text "nothing like it"\n', code=1)
        self.assertIn("line 3", failed.said)
        self.assertIn("Quillbox v1.0", failed.said)

    def test_standard_streams_that_are_closed_or_full_are_reported_and_never_a_file_of_the_device(self):
        start = ["--device", self.device, "--script"]
        script = self.file("script", "idle\n")
        self.quillbox("idle\n")
        commands = ([*start, script, "--transcript", "-"], ["--help"], ["--version"])
        self.assert_fails_where_output_takes_nothing("quillbox", commands, r"quillbox: standard output can't be written\.")
        for _, output in unwritable_outputs():
            self.run_program("quillbox", *start, script, **output)  # has nothing to print
        done = self.run_program("quillbox", *start, script, "--transcript", "/dev/full", code=1)
        self.assertEqual(done.said, "quillbox: the transcript \"/dev/full\" can't be written.\n")
        done = self.run_program("quillbox", *start, "-", code=2, stdin=None, preexec_fn=lambda: os.close(0))
        self.assertEqual(done.said, "the script can't be read\n")
        self.assertEqual((self.device / "device.lock").read_text(), "database\n")


class RunTest(ProgramTest):
    def test_full_card_keeps_every_source(self):
        for number in range(50):
            self.write(f"file{number}", os.urandom(2000))
        before = self.content()
        stick = self.folder / "stick"
        stick.mkdir()
        said = self.quillbox(options_script(log=True, delete=True) + full_backup(storage="\\Stick"),
                             "--card", f"Stick={stick},capacity=40000", code=4).said
        self.assertIn("the disk is full", said)
        self.assertTrue(0 < len(self.content()) < 50, "some fitted, some didn't")
        self.assertLessEqual(sum(path.stat().st_size for path in stick.rglob("*") if path.is_file()), 40_000)
        self.quillbox(options_script(policy=1024) + full_restore(set="\\Stick\\QUILBOX\\QLBX0001.QLT"),
                      "--card", f"Stick={stick}")
        self.assertEqual(self.content(), before)

    def test_what_is_in_use_is_left_out_and_reported(self):
        for name in ("free", "busy", "busy too"):
            self.write(name, b"content")
        with open(self.store / "busy", "ab"), open(self.store / "busy too", "ab"):
            said = self.quillbox(full_backup(), code=4).said
        self.assertRegex(said, r"^quillbox: 2 files aren't in the set, or not whole\. The first is .*busy.* "
                               r"\(another program uses it\)\.\nquillbox: .*busy.*\n$")
        self.assertEqual(self.set_tool("verify", self.set).text, "Sound: 1 item.\n")

    def test_folder_that_cannot_be_entered_is_reported(self):
        self.write("shut/a", b"a")
        self.write("b", b"b")
        (self.store / "shut").chmod(0o444)
        self.addCleanup((self.store / "shut").chmod, 0o755)
        user = {}
        if os.geteuid() == 0:
            for folder in (self.folder, *self.folder.rglob("*")):
                os.chown(folder, 65534, 65534)
            user = {"user": 65534, "group": 65534, "extra_groups": []}
        said = self.quillbox(full_backup(), code=4, **user).said
        self.assertIn('"\\shut\\a" (no permission, or it is read-only)', said)
        # A search for sets meets the folder too, and what is restored isn't in it.
        self.quillbox(options_script(policy=1023) + full_restore(), **user)

    def test_what_is_made_is_its_owners_whatever_the_mask(self):
        self.write("small", b"small")
        self.addCleanup(os.umask, os.umask(0o777))
        self.quillbox(full_backup())
        out = self.folder / "out"
        self.set_tool("extract", self.set, out)
        for made in [*self.sets.iterdir(), self.device / "device.db", out / "small"]:
            self.assertEqual(made.stat().st_mode & 0o777, 0o600, made)
        self.assertEqual(out.stat().st_mode & 0o777, 0o700)

    def test_folder_of_the_user_is_backed_up_and_restored_in_place(self):
        documents = self.folder / "documents"
        (documents / "deep").mkdir(parents=True)
        letter = self.file("documents/deep/letter", "dear")
        os.symlink("/etc/hostname", documents / "link")
        folder = ["--folder", f"Documents={documents}"]
        self.quillbox(full_backup(), *folder)
        letter.unlink()
        self.quillbox(full_restore(), *folder)
        self.assertEqual(letter.read_text(), "dear")
        self.assertEqual(len(self.items()), 1)

    def test_ninety_nine_sets_are_offered_and_a_hundredth_is_not_made(self):
        self.write("a", b"a")
        for number in range(1, 100):
            independent_set.Set().add(independent_set.FILE, "\\b", b"b").write(self.sets, number)
        before = self.content(self.sets)
        done = self.quillbox(NO_OVERRIDE + full_backup() + 'command 40006\nwait "Select"\nprint 1003\ncancel\nidle\n', code=4)
        self.assertIn('No set was made in "\\Card\\QUILBOX": the numbers 1 to 99 are all taken.', done.said)
        self.assertEqual(len(done.text.split()), 99)
        self.assertEqual(self.content(self.sets), before)


DAMAGED = r"\(it is damaged, or the disk failed\)"


class DamagedStoreTest(ContentsTest):
    """Databases and a registry that can't be read, so that a backup leaves them out and goes on."""

    def setUp(self):
        super().setUp()
        self.fill(database("First", texts("1")), database("Second", texts("2")))
        self.quillbox("idle\n")
        self.sound = (self.device / "device.db").read_bytes()

    def damage(self, sql):
        (self.device / "device.db").write_bytes(self.sound)
        with contextlib.closing(sqlite3.connect(self.device / "device.db", isolation_level=None)) as opened:
            opened.execute("PRAGMA legacy_alter_table = ON")
            opened.executescript(sql)

    def test_what_the_store_cannot_give_is_reported_by_a_backup(self):
        deep = ",".join(f"({100 + level}, {99 + level if level else 4}, 'k', 'k')" for level in range(17))
        for sql, reported, stored in (
                ("UPDATE store_record SET properties = x'01'", rf'^quillbox: 2 databases .* is database ".*" {DAMAGED}', 3),
                ("UPDATE store_database SET folded = 'else' WHERE name = 'First'", f'database "First" {DAMAGED}', 2),
                ("DROP TABLE store_sort_order", f"the list of databases {DAMAGED}", 1),
                ("ALTER TABLE store_database RENAME TO gone", f"the list of databases {DAMAGED}", 1),
                ("UPDATE store_database SET records = 2 WHERE name = 'First'", f'database "First" {DAMAGED}', 3),
                ("INSERT INTO registry_key (id, parent, name, folded) VALUES " + deep, f"the registry {DAMAGED}", 2)):
            with self.subTest(sql=sql):
                self.damage(sql)
                said = self.quillbox('answer "Override*" yes\n' + full_backup(DATABASES, REGISTRY), code=4).said
                self.assertRegex(said, reported + r"\.\n")
                self.assertIn(f"Sound: {stored} item", self.set_tool("verify", self.set).text)

    def test_a_database_that_is_stored_in_part_has_its_error_line_between_start_and_end(self):
        self.damage("UPDATE store_record SET properties = x'0102030405' WHERE database = 1")
        said = self.quillbox(options_script(log=True) + full_backup(DATABASES), code=4).said
        self.assertRegex(said, f'database "First" {DAMAGED}')
        self.assertEqual([line.split(": ", 1)[1] for line in self.log() if "First" in line],
                         ["INF: Start Database backup: First ", "ERR: Database backup: First ",
                          "INF: End Database backup: First "])

    def test_what_the_store_cannot_give_is_reported_by_an_export_and_at_a_start(self):
        for sql, command, reported in (
                ("DROP TABLE store_sort_order", ["list"], "can't be read"),
                ("UPDATE store_database SET folded = 'else' WHERE name = 'First'", ["export", "--name", "First"],
                 '"First" can\'t be read'),
                ("UPDATE store_database SET records = 2 WHERE name = 'First'", ["export"], '"First" can\'t be read')):
            with self.subTest(sql=sql):
                self.damage(sql)
                self.assertIn(reported, self.device_tool("database", *command, self.device, code=1).said)
        self.damage("DROP TABLE remembered_folder")
        self.assertIn("device remembers can't be read", self.quillbox("idle\n", code=1).said)

    def test_a_name_that_is_a_path_into_no_folder_is_reported(self):
        given = lines(*(database(name) for name in ("a\\b", "\\sys", "c")))
        warned = self.device_tool("database", "import", self.device, "-", given=given).said
        self.assertEqual([line.split('"')[1] for line in warned.splitlines()], ["a\\b", "\\sys"])
        said = self.quillbox(full_backup(DATABASES), code=4).said
        self.assertRegex(said, r'^quillbox: This isn\'t in the set, or not whole: database "a\\b" '
                               r'\(there is no folder for it\)\.\n')
        # A restore makes the folder for a moment, unless it can't.
        self.write_set(database("a\\b", texts("came")))
        self.damage("DELETE FROM store_database WHERE name = 'a\\b'")
        self.quillbox(full_restore())
        self.assertIn("came", self.exported())
        self.assertEqual(os.listdir(self.store), [], "the folder of the image stays")
        self.write("a")
        self.assertIn("a\\b.CDB", self.quillbox(full_restore(), code=4).said)


class FullDeviceTest(ContentsTest):
    """The device's own disk is almost full. Its files and the card with the set are on another disk."""

    def setUp(self):
        super().setUp()
        self.quillbox("idle\n")
        kept = {path.name: path.read_bytes() for path in self.device.iterdir() if path.is_file()}
        self.mount(self.device, "size=4m")
        self.mount(self.store, "size=64m")
        for name, content in kept.items():
            (self.device / name).write_bytes(content)
        self.stick = self.folder / "stick"
        self.stick.mkdir()

    def mount(self, folder, options):
        folder.mkdir(exist_ok=True)
        if subprocess.run(["mount", "-t", "tmpfs", "-o", options, "none", folder], capture_output=True, check=False).returncode:
            self.skipTest("mounting a file system needs the administrator")
        self.addCleanup(subprocess.run, ["umount", folder], check=True)

    def restore_without_room(self, *databases, registry=None, before="", then=""):
        """Restores a set where 400,000 bytes are free, which must fail; what standard error says."""
        self.write_set(*databases, registry=registry, folder=self.stick / "QUILBOX")
        status = os.statvfs(self.device)
        filler = self.file("device/filler", bytes(status.f_bavail * status.f_bsize - 400_000))
        said = self.quillbox(before + full_restore(then, set="\\Stick\\QUILBOX\\QLBX0001.QLT"),
                             "--card", f"Stick={self.stick}", code=4).said
        filler.unlink()
        return said

    def test_database_that_finds_no_room_is_reported_and_costs_no_other_records_and_no_old_one(self):
        big = database("Big", [[item(1, TEXT, f"{number:0300}")] for number in range(3000)])
        said = self.restore_without_room(big)
        self.assertRegex(said, r'^quillbox: This couldn\'t be restored whole: database "Big" \(the disk is full\)\.\n$')
        found = self.exported().splitlines()
        rest = iter(lines(*after(1, [big])).splitlines())
        self.assertTrue(all(line in rest for line in found), "a record is in the wrong order or another one")
        self.assertTrue(200 < len(found) < 3001, len(found))

        old = database("Big", texts("old"))
        self.fill(old)
        said = self.restore_without_room(big, before='answer "Database:*" yes\n')
        self.assertIn('database "Big" (the disk is full)', said)
        self.assert_holds(old)

    def test_registry_that_finds_no_room_is_reported_and_stays(self):
        before = self.registry()
        large = independent_set.registry_bytes({"HKEY_USERS\\new": [f'"v"="{"x" * 500_000}"']})
        said = self.restore_without_room(registry=large, then=CONFIRM_REGISTRY)
        self.assertRegex(said, r"restored whole: the registry \(the disk is full\)\.\n$")
        self.quillbox("idle\n")
        self.assertEqual(self.registry(), before)

    def test_reason_why_no_folder_can_be_made_is_reported(self):
        self.write("a", b"a")
        self.mount(self.stick, "ro")
        said = self.quillbox(NO_OVERRIDE + full_backup(storage="\\Stick"), "--card", f"Stick={self.stick}", code=4).said
        self.assertEqual(said, 'quillbox: No set was made in "\\Stick\\QUILBOX": the disk can\'t be written.\n')


if __name__ == "__main__":
    unittest.main()
