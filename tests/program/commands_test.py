"""quillbox backup, restore and sets: what they do, print and return, without a window and without a script."""
import json
import os
import subprocess
import time

import card_reader
from companions import BIN
import independent_set
from program import ProgramTest


class CommandTest(ProgramTest):
    def command(self, *words, code=0, **more):
        return self.run_program("quillbox", "--device", self.device, *words, code=code, **more)

    def result(self, *words, code=0):
        found = json.loads(self.command(*words, "--json", code=code).text)
        self.assertEqual(found["exitCode"], code)
        return found

    def listed(self, number=1):
        return {name for kind, name in self.items(number) if kind == independent_set.FILE}

    def fill(self):
        for name in ("a", "docs/b", "docs/deep/c", ".hidden/d"):
            self.write(name, name.encode())


class BackupTest(CommandTest):
    def test_what_is_chosen_is_in_the_set_and_nothing_else(self):
        self.fill()
        (self.card / "photos").mkdir()
        (self.card / "photos/p").write_bytes(b"p")
        everything = {"\\a", "\\docs\\b", "\\docs\\deep\\c", "\\Card\\photos\\p"}
        for number, (words, files, registry) in enumerate((
                ([], everything, True), (["--files"], everything, False), (["--registry"], set(), True),
                (["--item", "/docs", "--item", "\\a"], {"\\docs\\b", "\\docs\\deep\\c", "\\a"}, False),
                (["--item", "/docs/deep", "/docs/deep/c", "registry"], {"\\docs\\deep\\c"}, True),
                (["--item", "/.hidden"], {"\\.hidden\\d"}, False)), 1):
            with self.subTest(words):
                found = self.result("backup", "--to", "Card", *words)
                self.assertEqual(found["set"]["path"], str(self.sets / f"QLBX{number:04d}.QLT"))
                self.assertEqual(self.listed(number), files)
                self.assertEqual((independent_set.REGISTRY, "") in self.items(number), registry)
                self.assertEqual(found["items"], {"files": len(files), "databases": 0, "registry": int(registry)})

    def test_a_set_can_go_to_a_card_the_device_or_a_host_folder_which_is_not_backed_up(self):
        self.fill()
        share = self.folder / "a share"
        (share / "docs").mkdir(parents=True)
        (share / "docs/foreign").write_bytes(b"foreign")
        (self.store / "a share").mkdir()
        for storage, sets, path in (("Card", self.sets, "\\Card"), ("\\Card", self.sets, "\\Card"),
                                    (self.card, self.sets, "\\Card"), ("Main device", self.store / "QUILBOX", ""),
                                    (share, share / "QUILBOX", "\\a share (2)"), (f"{share}/.", share / "QUILBOX", "\\a share (2)")):
            with self.subTest(storage):
                made = self.result("backup", "--to", storage, "--files")["set"]
                self.assertEqual(os.path.dirname(made["path"]), str(sets))
                self.assertEqual(made["list"], f"{path}\\QUILBOX\\QLBX{made['number']:04d}.QLT")
                names = {name for _, name, _ in card_reader.read_set(sets / f"QLBX{made['number']:04d}.QLT")}
                self.assertFalse({name for name in names if "foreign" in name})
        found = json.loads(self.command("sets", share, "--json").text)["sets"]
        self.assertEqual([one["items"]["files"] for one in found], [3, 3])

    def test_options_hold_for_one_run_and_the_saved_ones_stay(self):
        self.fill()
        before = self.registry()
        self.command("backup", "--to", "Card", "--item", "/docs", "--comment", "Nightly", "--log", "--verify", "--delete-sources")
        self.assertEqual(set(self.content()), {b"a", b".hidden/d"})
        self.assertTrue(self.log())
        self.assertEqual(json.loads(self.command("sets", "--json").text)["sets"][0]["comment"], "Nightly")
        self.command("backup", "--to", "Card", "--files", "--replace", "1")
        self.assertEqual(self.listed() - {"\\Card\\QUILBOX\\BACKUP0001.LOG"}, {"\\a"})
        self.assertEqual(self.registry(), before)
        self.assertEqual(set(self.content()), {b"a", b".hidden/d"})

    def test_a_dry_run_stores_nothing_and_a_file_in_use_is_reported_as_left_out(self):
        self.fill()
        self.assertRegex(self.command("backup", "--to", "Card", "--dry-run").text,
                         r'^To store: 3 files and the registry, 18 bytes\. "\\Card" has room for .* [KMGT]B\.\n$')
        self.assertFalse(self.sets.exists())
        with open(self.store / "a", "ab"):
            planned = self.result("backup", "--to", "Card", "--files", "--dry-run", code=4)
            self.assertFalse(self.sets.exists())
            found = self.result("backup", "--to", "Card", "--files", code=4)
        self.assertEqual((planned["outcome"], planned["items"]["files"], planned["leftOut"]), ("dry run", 2, found["leftOut"]))
        self.assertEqual((found["outcome"], found["items"]["files"]), ("left out", 2))
        self.assertIn("another program uses it", found["leftOut"][0]["sentence"])
        done = self.command("backup", "--to", "Card", "--files", "--quiet")
        self.assertEqual(done.text + done.said, "")
        self.assertRegex(self.command("backup", "--to", "Card", "--files").text, r"^Set 3 is complete: 3 files, .* in \".*\"\.\n$")


    def test_a_set_is_sealed_unless_that_is_refused_or_fails(self):
        self.fill()
        self.command("backup", "--to", "Card")
        subprocess.run(["sha256sum", "--quiet", "-c", "QLBX0001.SUM"], cwd=self.sets, check=True)
        self.command("backup", "--to", "Card", "--replace", "1", "--files")
        self.assertIn(", sealed.", self.set_tool("verify", self.set).text)
        self.command("backup", "--to", "Card", "--no-seal")
        (self.sets / "QLBX0003.SUM").mkdir()
        done = self.command("backup", "--to", "Card", code=4)
        self.assertIn("It has no checksums.", done.text)
        self.assertRegex(done.said, r"checksums of the set can't be written: .*\.\n")
        self.assertEqual([one["sealed"] for one in json.loads(self.command("sets", "--json").text)["sets"][:2]], [True, False])
        self.assertEqual([name for name in os.listdir(self.sets) if name.endswith(".part")], [])
        for number in range(60):
            self.write(f"noise/{number}", os.urandom(300))
        (self.folder / "small").mkdir()
        done = self.command("--card", f"Small={self.folder}/small,capacity=9000", "backup", "--to", "Small", code=4)
        self.assertIn('"\\Small\\QUILBOX\\QLBX0001.SUM" (the disk is full)', done.said)
        self.assertNotIn(".part", done.said)


class RotationTest(CommandTest):
    def old_set(self, number, day):
        comment = f"Backup date:{day:02}/03/2026 (03:00)\r\nComments:\r\n"
        return independent_set.Set(comment).add(independent_set.FILE, "\\x", b"x").write(self.sets, number)

    def numbers(self):
        return sorted(int(path.stem[-2:]) for path in self.sets.glob("*.QLT"))

    def test_a_complete_backup_removes_the_sets_that_no_rule_keeps(self):
        self.fill()
        for number, day in ((1, 20), (2, 21), (3, 21), (4, 22)):
            self.old_set(number, day)
        found = self.result("backup", "--to", "Card", "--keep-daily", "3")
        self.assertEqual(self.numbers(), [3, 4, 5])
        self.assertEqual(found["removed"], [str(self.sets / f"QLBX000{number}.QLT") for number in (2, 1)])
        self.assertEqual(sorted(path.name for path in self.sets.glob("*000[12]*")), [])
        self.assertIn("Removed 2 old sets.", self.command("backup", "--to", "Card", "--keep-last", "2").text)
        self.assertEqual(self.numbers(), [1, 5])

    def test_an_incomplete_backup_removes_no_old_set_and_a_damaged_old_set_stays(self):
        self.fill()
        for number in (1, 2, 3):
            self.old_set(number, 20 + number)
        (self.sets / "QLBX0002.QDT").write_bytes(b"QBX")
        with open(self.store / "a", "ab"):
            self.assertIn("No old set was removed", self.command("backup", "--to", "Card", "--files", "--keep-last", "1", code=4).said)
        self.assertEqual(self.numbers(), [1, 2, 3, 4])
        said = self.command("backup", "--to", "Card", "--keep-last", "2", code=4).said
        self.assertRegex(said, r'The old set ".*QLBX0002\.QLT" stays, because it is damaged')
        self.assertEqual(self.numbers(), [2, 4, 5])


class RestoreTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.fill()
        self.command("backup", "--to", "Card", "--files")

    def test_items_come_back_and_files_that_exist_are_kept_or_replaced_as_said(self):
        stem = self.sets / "QLBX0001"
        for named, words, back in ((self.set, ["--existing", "replace"], {b"a": b"a", b"docs/b": b"docs/b"}),
                                   (stem, ["--existing", "skip"], {b"a": b"new", b"docs/b": b"docs/b"}),
                                   ("\\Card\\QUILBOX\\QLBX0001.QLT", ["--item", "/docs"], {b"a": b"new", b"docs/b": b"docs/b"}),
                                   (stem.with_suffix(".QDT"), ["--item", "/docs/b"], {b"a": b"new", b"docs/b": b"docs/b"})):
            with self.subTest(words):
                self.empty_store()
                self.write("a", b"new")
                self.command("restore", named, *words)
                content = self.content()
                self.assertEqual({name: content[name] for name in back}, back)
                self.assertEqual(b"docs/deep/c" in content, "/docs/b" not in words)
        self.assertIn("3 files", self.command("restore", self.set, "--dry-run").text)
        other = self.folder / "other"
        self.run_program("quillbox-device", "init", "--demonstration", other)
        self.run_program("quillbox", "--device", other, "backup", "--to", self.folder)
        said = self.run_program("quillbox", "--device", other, "restore", self.folder / "QUILBOX/QLBX0001", "--existing", "skip", code=2).said
        self.assertRegex(said, r'already 3 databases of the set, such as ".* Database"\. Say skip or replace with --databases\.')

    def test_a_restore_on_a_terminal_asks_about_each_file_and_an_answer_can_apply_to_all(self):
        for answers, replaced in (("y\nn\nn\n", 1), ("a\n", 3), ("o\n", 0)):
            for name in ("a", "docs/b", "docs/deep/c"):
                self.write(name, b"new")
            master, slave = os.openpty()
            os.write(master, answers.encode())
            done = self.command("restore", self.set, stdin=slave, stderr=slave)
            os.close(slave)
            os.close(master)
            self.assertEqual(sum(content != b"new" for name, content in self.content().items() if b".hid" not in name), replaced)
            self.assertIn("Kept as they were" if replaced < 3 else "Restored 3 files.", done.text)

    def test_a_list_that_is_cut_anywhere_is_damaged_in_sets_and_its_restore_says_so(self):
        whole = self.set.read_bytes()
        comment = 4 + 2 * int.from_bytes(whole[:4], "little")
        for length, code in ((0, 1), (3, 1), (comment - 1, 1), (comment + 8, 4), (len(whole) - 9, 4), (len(whole) - 1, 4), (len(whole), 0)):
            with self.subTest(length):
                self.set.write_bytes(whole[:length])
                self.assertEqual([one["damaged"] for one in json.loads(self.command("sets", "--json").text)["sets"]], [code != 0])
                said = self.command("restore", self.set, "--existing", "replace", code=code).said
                self.assertEqual("the set is damaged" in said, code != 0, said)

    def test_a_device_that_does_not_exist_is_made_empty(self):
        self.device = self.folder / "new"
        self.command("restore", self.set)
        self.assertEqual(len(self.content(self.device / "object-store")), 3)


class RefusalTest(CommandTest):
    """A refused command does nothing, and its message and exit code say why. faults_test.py tests most refusals."""

    def test_a_command_that_cannot_begin_says_why_and_changes_nothing(self):
        self.fill()
        self.write("only", b"")
        lists = self.folder / "lists" / "QUILBOX"
        independent_set.Set().add(independent_set.FILE, "\\x", b"x").write(lists)
        before = self.content(self.folder)
        for code, words, sentence in (
                (2, ["backup", "--to", "Card", "--script", "-"], "--script"), (2, ["restore"], "SET is required"),
                (2, ["restore", lists / "QLBX0001", "--existing", "maybe"], "--existing"),
                (2, ["--profile", "../x", "sets"], "name of a profile"), (1, ["sets", "Stick"], 'no card "\\Stick"'),
                (1, ["restore", lists.parent], "Name one of its sets: QUILBOX/QLBX0001.QLT."),
                (1, ["restore", "\\Card\\QUILBOX\\QLBX0001"], "can't be read"),
                (1, ["restore", lists / "QLBX0001", "--item", "/y"], 'no "\\y" in the set')):
            with self.subTest(words):
                done = self.command(*words, code=code)
                self.assertIn(sentence, done.said)
                self.assertEqual(done.text, "")
        gone = self.output_folder()
        done = self.command("sets", "a/b", code=1, preexec_fn=lambda: (os.chdir(gone), os.rmdir(gone)))
        self.assertRegex(done.said, "^quillbox: .*No such file or directory.*\n$")
        after = {name: content for name, content in self.content(self.folder).items() if not name.startswith(b"device/device.")}
        self.assertEqual(after, {name: before[name] for name in after})

    def test_a_set_can_be_replaced_when_every_number_is_taken(self):
        self.write("a", b"a")
        for number in range(1, 100):
            independent_set.Set().write(self.sets, number)
        self.command("backup", "--to", "Card", "--replace", "99")

    def test_a_refusal_names_the_process_that_uses_the_device_and_wait_waits_for_its_end(self):
        script = self.file("script", 'command 40011\nwait "Options"\nprint text\nwait "never"\n')
        self.write("a", b"a")
        with subprocess.Popen([BIN / "quillbox", "--device", self.device, "--script", script], stdout=subprocess.PIPE) as first:
            try:
                first.stdout.readline()
                self.assertIn(f"another Quillbox (process {first.pid})", self.command("backup", "--to", "Card", code=1).said)
                waiting = subprocess.Popen([BIN / "quillbox", "--device", self.device, "backup", "--to", "Card", "--wait", "60"],
                                           stdout=subprocess.DEVNULL)
                time.sleep(0.3)
                self.assertIsNone(waiting.poll())
            finally:
                first.kill()
        self.assertEqual(waiting.wait(60), 0)

    def test_a_profile_has_the_options_and_an_unknown_key_is_refused(self):
        self.fill()
        profile = self.folder / "quillbox" / "nightly.toml"
        profile.parent.mkdir()
        user = {"env": {**os.environ, "XDG_CONFIG_HOME": str(self.folder)}}
        text = f'device = "{self.device}"\ncard = ["Stick={self.folder}/stick"]\n[backup]\nto = "Stick"\nfiles = true\n'
        (self.folder / "stick").mkdir()
        profile.write_text(text)
        self.run_program("quillbox", "--profile", "nightly", "backup", **user)
        self.assertTrue((self.folder / "stick/QUILBOX/QLBX0001.QLT").exists())
        check = ("profile", "nightly", "--check")
        self.assertIn("is good", self.run_program("quillbox", *check, **user).text)
        faults = ((text + "too = 1\n", "line 6: backup.too isn't an option"), (text + "replace = 100\n", "line 6: --replace"),
                  ("[bakup]\n" + text, "line 1: [bakup] isn't a command"),
                  (text.replace("Stick=", "Stick"), "line 2: --card"), (text.replace('"Stick"', '"/a#b/"'), "line 4: a quote isn't closed"))
        for wrong, sentence in faults:
            profile.write_text(wrong)
            self.assertIn(sentence, self.run_program("quillbox", *check, code=2, **user).said)
        self.assertIn(sentence, self.run_program("quillbox", "--profile", "nightly", "backup", code=2, **user).said)
        for wrong, sentence in ((text.replace("to =", "comment ="), "--to is required"), (text.replace("/stick", "/gone"), "gone\" of \"Stick\""),
                                (text.replace('"Stick"', '"/gone/"'), "/gone/"), (text.replace("/device", "/typo"), "is not a device")):
            profile.write_text(wrong)
            self.assertIn(sentence, self.run_program("quillbox", *check, code=2, **user).said)
