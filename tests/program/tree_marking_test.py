"""What the user marks in the tree is what "Selected items..." stores, no more and no less, and the tree shows it."""
import shutil
import subprocess
import unittest

from program import BIN, FULL_BACKUP, FULL_RESTORE, options_script
from tree import BACK_UP_MARKED, DATABASE, FILE, MARK_FOLDER, REGISTRY, TreeTest, click, collapse, expand, images

SET = "\\Card\\QUILBOX\\QLBX0001.QLT"


class TreeMarkingTest(TreeTest):
    def fill(self, *names):
        for name in names:
            self.write(name, f"content of {name}".encode())

    def content_of(self, *names):
        return {"\\" + name.replace("/", "\\"): f"content of {name}".encode() for name in names}

    def test_exactly_what_is_marked_comes_into_the_set(self):
        self.fill("A/B/C/deep", "A/B/C/left", "A/B/middle", "A/near", "root", "rom")
        self.set_attributes("rom", 0x40)
        start = {"Databases": 0, "Files": 2, "Registry": 15}
        self.quillbox(
            images(start) +
            expand("Files", "Files\\A", "Files\\A\\B", "Files\\A\\B\\C") +
            images({"Files\\A": 9, "Files\\A\\B\\C\\deep": 6, "Files\\rom": 8}) +
            click("Files\\A\\B\\C\\deep") +
            images({"Files\\A\\B\\C\\deep": 7, "Files\\A\\B\\C": 10, "Files\\A\\B": 10, "Files\\A": 10, "Files": 3}) +
            click("Files\\A\\B\\C\\left", "Files\\A\\B\\middle", "Files\\root", "Files\\rom", "Files\\A\\B") +
            images({"Files\\rom": 8, "Files\\A\\B": 10}) +
            click("Files\\A\\B\\C\\left", "Files\\A\\B\\middle", "Files\\A\\B\\middle", "Files\\A\\B\\middle") +
            images({"Files\\A\\B\\C\\left": 6, "Files\\A\\B\\middle": 6, "Files\\A\\B\\C": 10, "Files\\A\\B": 10}) +
            expand("Databases") + click("Databases\\Tasks", "Databases\\Contacts", "Databases\\Contacts") +
            images({"Databases\\Tasks": 12, "Databases\\Contacts": 11, "Databases": 1}) +
            click("Registry") + images({"Registry": 16}) + BACK_UP_MARKED +
            images({"Files": 3, "Databases": 1, "Registry": 16, "Databases\\Tasks": 12}) +
            expand("Files", "Files\\A", "Files\\A\\B", "Files\\A\\B\\C") +
            images({"Files\\root": 7, "Files\\A\\near": 6, "Files\\A\\B\\C\\deep": 7, "Files\\A\\B\\C\\left": 6}) +
            click("Files\\root", "Files\\A\\B\\C\\deep", "Databases\\Tasks", "Registry") +
            images({**start, "Files\\A": 9, "Files\\A\\B\\C": 9, "Databases\\Tasks": 11}) +
            "command 40005\nexpect text \"No item to backup!\"\nok\nidle\n")
        items = self.items()
        self.assertEqual(set(items), {(FILE, "\\A\\B\\C\\deep"), (FILE, "\\root"), (DATABASE, "Tasks"), (REGISTRY, "")})
        self.assertEqual(self.files(), self.content_of("A/B/C/deep", "root"))
        self.assertIn("Sand the rudder".encode("utf-16-le"), items[DATABASE, "Tasks"])
        self.assertFalse((self.card / "QUILBOX" / "QLBX0002.QLT").exists())

    def test_two_quick_clicks_are_two_toggles(self):
        self.fill("F/a", "F/b")
        double = "doubleclick {}\n".format
        self.quillbox(
            expand("Files", "Databases") + double('"Files\\F"') +  # opens it
            double('"Files\\F\\a"') + click("Files\\F\\b") + double('"Files\\F\\b"') + double('"Registry"') +
            double('"Databases\\Tasks"') +
            images({"Files\\F\\a": 6, "Files\\F\\b": 7, "Files\\F": 10, "Databases\\Tasks": 11, "Registry": 15}) +
            BACK_UP_MARKED)
        self.assertEqual(self.files(), self.content_of("F/b"))

    def test_commands_that_make_the_listing_stale_reset_it_and_no_others(self):
        self.fill("a", "b", "F/c")
        marked = expand("Files", "Databases") + click("Files\\a", "Databases\\Tasks", "Registry")
        # What each leaves: whether "Files" was collapsed, and whether the marks are gone from the lists.
        full_backup = "command {}\nwait \"Full Backup\"\ncheck 1005\nok\nwait \"Select\"\nselect 1003 \"\\Card\"\nok\nidle\n"
        cancelled = "cancel\nidle\n"
        restore = f'answer "*exists replace*" no\ncommand {{}}\nwait "Select"\nselect 1003 "{SET}"\nok\n{{}}\nidle\n'
        self.quillbox(FULL_BACKUP.format(comment="", storage="\\Card"))
        for command, reset, cleared in (
                ("command 504\ncancel\n", False, False), ("command 40009\nok\n", False, False),
                ("command 503\nok\n", True, False), ("command 40010\ncancel\n", True, False),
                ("command 502\n" + cancelled, True, False), ("command 40003\n" + cancelled, True, False),
                (full_backup.format(502), True, True), (full_backup.format(40003), True, True),
                ("command 40005\n" + cancelled, True, False), (BACK_UP_MARKED, True, False),
                ("command 40006\n" + cancelled, True, False), ("command 40007\n" + cancelled, True, False),
                (restore.format(40006, 'wait "Full Restore"\ncancel'), True, True),
                (restore.format(40007, 'wait "Restore selection"\ncancel'), True, True),
                (restore.format(40006, 'wait "Full Restore"\nok'), True, True)):
            with self.subTest(command=command):
                for path in (self.card / "QUILBOX").glob("*2.*"):
                    path.unlink()
                trees = self.trees('answer "Override*" no\n' + marked + command + "print tree\n" + expand("Files") +
                                   collapse("Databases") + expand("Databases") + "print tree\n")
                after, anew = ([path for path, _ in trees[0]], dict(trees[1]))
                self.assertEqual("Files\\a" not in after, reset)
                self.assertIn("Databases\\Tasks", after)
                self.assertEqual((anew["Files\\a"], anew["Files\\b"]), (6 if cleared else 7, 6))
                self.assertEqual(anew["Databases\\Tasks"], 11 if cleared else 12)
                self.assertEqual(anew["Registry"], 16)  # no run takes it away

    def test_top_items_show_no_mark_after_a_run_that_emptied_the_lists(self):
        self.fill("a")
        marked = expand("Files", "Databases") + click("Files\\a", "Databases\\Tasks") + collapse("Databases")
        both = images({"Files": 3, "Databases": 1})
        none = images({"Files": 2, "Databases": 0})
        self.quillbox(marked + both + FULL_BACKUP.format(comment="", storage="\\Card") + none + marked + both +
                      FULL_RESTORE.format(set=SET).replace('wait "Full Restore"\nok', 'wait "Full Restore"\ncancel') + none)

    def test_a_collapsed_files_is_expanded_by_the_first_reset_and_left_alone_once_it_was_listed(self):
        self.fill("a")
        filter_dialog = 'command 503\nwait "File filter"\ncancel\nidle\n'
        first, second, third = self.trees(filter_dialog + "print tree\n" + collapse("Files") + filter_dialog +
                                          "print tree\n" + expand("Files") + filter_dialog + "print tree\n")
        self.assertIn(("Files\\a", 6), first)
        self.assertNotIn(("Files\\a", 6), second)
        self.assertNotIn(("Files\\a", 6), third)

    def test_what_vanished_or_came_after_marking(self):
        self.fill("F/stays", "F/goes", "gone/x", "gone/deep/y", "other")
        for number in range(100):
            self.fill("long/" + "n" * 90 + str(number))
        script = options_script(log=True) + (
            expand("Files") + click("Files\\F") + MARK_FOLDER + click("Files\\gone") + MARK_FOLDER +
            click("Files\\other") + expand("Files\\long") + "print tree\n" + BACK_UP_MARKED + expand("Files", "Files\\F") +
            images({"Files\\F\\came": 6, "Files\\F\\stays": 7, "Files\\other": 7}))
        # The tree that it prints doesn't fit the pipe, so it stands still until the rest of it is read.
        process = subprocess.Popen([BIN / "quillbox", "--device", self.device, "--script", "-"], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, pipesize=4096)
        process.stdin.write(script.encode())
        process.stdin.close()
        process.stdin = None
        process.stdout.read(1)
        (self.store / "F" / "goes").unlink()
        shutil.rmtree(self.store / "gone")
        self.fill("F/came", "F/new/came")
        _, errors = process.communicate(timeout=600)
        self.assertEqual(process.returncode, 4, errors)
        self.assertIn(b"3 files aren't in the set, or not whole.", errors)
        self.assertEqual(errors.count(b"(it is gone)"), 3, errors)
        self.assertEqual(self.files(), self.content_of("F/stays", "other"))
        log = (self.card / "QUILBOX" / "BACKUP0001.LOG").read_text()
        for name in ("\\F\\goes", "\\gone\\x", "\\gone\\deep\\y"):
            self.assertIn("ERR: File access file: " + name, log)
        self.assertEqual(log.count("ERR:"), 3)


if __name__ == "__main__":
    unittest.main()
