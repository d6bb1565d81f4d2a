"""Trouble from outside: bad usage, streams that can't be used, folders that can't be entered, damaged stores and sets,
files in the way."""
import contextlib
import os
import sqlite3
import subprocess

import independent_set
from companions import BIN, database, lines
from device_contents import I2, TEXT, ContentsTest, after, image, item, texts
from host_trouble import unwritable_outputs
from program import DATABASES, FILES, REGISTRY, ProgramTest, full_backup, full_restore, options_script

DAMAGED = r"\(it is damaged, or the disk failed\)"
YES = 'answer "Database:*" yes\n'


class HostTest(ProgramTest):
    def test_bad_usage_is_reported(self):
        for code, arguments in ((2, ["--unknown"]), (2, ["--card", f"C={self.card},capacity=many"]), (1, ["--card", "C=/nowhere"])):
            with self.subTest(arguments):
                self.assertNotEqual(self.quillbox("idle\n", *arguments, code=code).said, "")
        self.assertIn("line 2", self.quillbox("idle\nfly\n", code=2).said)
        failed = self.quillbox('command 40009\nexpect text "nothing like it"\n', code=1)
        self.assertRegex(failed.said, "line 2.*Quillbox v1.0")

    def test_standard_streams_that_are_closed_or_full_are_reported_and_never_a_file_of_the_device(self):
        start = ["--device", self.device, "--script"]
        script = self.file("script", "idle\n")
        self.quillbox("idle\n")
        commands = ([*start, script, "--transcript", "-"], ["--help"], ["--version"])
        self.assert_fails_where_output_takes_nothing("quillbox", commands, r"quillbox: standard output can't be written\.")
        for _, output in unwritable_outputs():
            self.run_program("quillbox", *start, script, **output)  # the program has nothing to print
        done = self.run_program("quillbox", *start, script, "--transcript", "/dev/full", code=1)
        self.assertEqual(done.said, "quillbox: the transcript \"/dev/full\" can't be written.\n")
        done = self.run_program("quillbox", *start, "-", code=2, stdin=None, preexec_fn=lambda: os.close(0))
        self.assertEqual(done.said, "the script can't be read\n")
        self.assertEqual((self.device / "device.lock").read_text(), "database\n")

    def printed(self, words, locale, stream, terminal=True):
        """Returns the output of the command `words` to the stream "stdout" or "stderr". A terminal may return one line
        in several reads."""
        reader, writer = os.openpty() if terminal else os.pipe()
        with open(reader, "rb", buffering=0) as received:
            subprocess.run(words, **{stream: writer}, check=False, env={**os.environ, "LC_ALL": locale})
            os.close(writer)
            text = b""
            with contextlib.suppress(OSError):  # a terminal reports its end as EIO
                while more := received.read(4096):
                    text += more
        return text

    def test_a_terminal_of_any_locale_gets_only_what_it_can_show(self):
        independent_set.Set().add(independent_set.FILE, "\\Bücher 予\x9b31m", b"x").write(self.folder)
        words = [BIN / "quillbox-set", "list", self.folder / "QLBX0001"]
        for locale, terminal, shown in (("C", True, b"\\B?cher ?<U+009B>31m"), ("C.UTF-8", True, "\\Bücher 予<U+009B>31m".encode()),
                                        ("C", False, "\\Bücher 予<U+009B>31m".encode())):
            self.assertIn(shown, self.printed(words, locale, "stdout", terminal))
        unknown = os.fsencode(self.folder) + b"/\xc2\x9b31m\xff"
        words = [BIN / "quillbox", "--device", unknown, "sets"]
        self.assertIn(b"/?31m?\" is not a device", self.printed(words, "C.UTF-8", "stderr"))

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
        # The search for sets also meets this folder. The restore writes no file into it.
        self.quillbox(options_script(policy=1023) + full_restore(), **user)

    def test_new_files_are_accessible_to_their_owner_only_whatever_the_umask(self):
        self.write("small", b"small")
        self.addCleanup(os.umask, os.umask(0o777))
        self.quillbox(full_backup())
        for made in [*self.sets.iterdir(), self.device / "device.db"]:
            self.assertEqual(made.stat().st_mode & 0o777, 0o600, made)


class DamageTest(ContentsTest):
    def test_items_that_the_store_cannot_read_are_reported_by_a_backup_and_an_export(self):
        self.fill(database("First", texts("1")), database("Second", texts("2")))
        self.quillbox("idle\n")
        sound = (self.device / "device.db").read_bytes()
        deep = ",".join(f"({100 + level}, {99 + level if level else 4}, 'k', 'k')" for level in range(17))
        # For each damage: what the backup reports, how many items it stores, and the exit code of an export.
        for sql, reported, stored, exported in (
                ("UPDATE store_record SET properties = x'01'", rf'^quillbox: 2 databases .* is database ".*" {DAMAGED}', 3, 1),
                ("UPDATE store_database SET folded = 'else' WHERE name = 'First'", f'database "First" {DAMAGED}', 2, 1),
                ("DROP TABLE store_sort_order", f"the list of databases {DAMAGED}", 1, 1),
                ("UPDATE store_database SET records = 2 WHERE name = 'First'", f'database "First" {DAMAGED}', 3, 1),
                ("INSERT INTO registry_key (id, parent, name, folded) VALUES " + deep, f"the registry {DAMAGED}", 2, 0)):
            with self.subTest(sql=sql):
                (self.device / "device.db").write_bytes(sound)
                with contextlib.closing(sqlite3.connect(self.device / "device.db", isolation_level=None)) as opened:
                    opened.execute(sql)
                said = self.quillbox('answer "Override*" yes\n' + full_backup(DATABASES, REGISTRY), code=4).said
                self.assertRegex(said, reported + r"\.\n")
                self.assertIn(f"Sound: {stored} item", self.set_tool("verify", self.set).text)
                self.device_tool("database", "export", self.device, "--name", "First", code=exported)

    def test_damaged_images_cost_no_database_that_exists_and_none_that_follows(self):
        whole = image(database("Victim", [[item(1, I2, 5)], [item(2, TEXT, "whole")]], 7))
        images = {"Empty file": b"", "Cut": whole[:-1], "No end of the name": b"\xfe\xff\xff\xff" + whole[4:]}
        existing = [database(name, texts("old")) for name in [*images, "Victim"]]
        last = database("z", texts("whole"))
        self.fill(*existing)
        self.write_set(*images.items(), last)
        said = self.quillbox(YES + full_restore(), code=4).said
        self.assertIn("3 databases couldn't be restored whole.", said)
        self.assertEqual({name for name in images if f'database "{name}"' in said}, set(images))
        self.assert_holds(*existing, last)
        self.assertEqual(self.content(), {})

    def test_whole_records_of_a_cut_stream_come_back_over_an_old_image_which_is_reported(self):
        many = database("Big", texts(*(f"{number:0400}" for number in range(300))))
        self.fill()
        os.truncate(self.write_set(many).with_suffix(".QDT"), len(independent_set.pack_stream(image(many))) - 20)
        self.write("Big.CDB", b"of a killed run")
        said = self.quillbox(YES + full_restore(), code=4).said
        self.assertIn('couldn\'t be restored whole: database "Big" (the set is damaged)', said)
        self.assertIn('and was replaced: "\\Big.CDB"', said)
        self.assertEqual(self.content(), {})
        found = self.exported().splitlines()[1:]
        self.assertGreater(len(found), 100)
        self.assertEqual(found, lines(*after(1, [many])).splitlines()[1:len(found) + 1])

    def test_a_user_file_replaced_by_a_runs_file_is_reported_and_a_read_only_one_stays(self):
        self.fill(database("Target", texts("first")))
        self.write("Target.CDB", b"the user's")
        mine = self.write("TMVRegFile.QBR", b"mine")
        mine.chmod(0o444)
        # Set 1 contains the files. During the backup of the databases, the image of one replaces the user's file
        # Target.CDB. The restore of set 1 brings the file back.
        backups = 'answer "Override*" no\n' + full_backup(FILES) + full_backup(DATABASES) + full_backup(REGISTRY)
        said = self.quillbox(backups + full_restore('answer "*" yes\n'), code=4).said
        self.assertIn('was replaced: "\\Target.CDB"', said)
        self.assertEqual(self.content(), {b"Target.CDB": b"the user's", b"TMVRegFile.QBR": b"mine"})
        self.assertEqual(self.items(3), {})
