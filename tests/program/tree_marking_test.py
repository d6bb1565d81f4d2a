"""What the user marks in the tree is what "Selected items..." stores, no more and no less, and the tree shows it."""
import shutil
import subprocess
import unittest

from program import BIN, FULL_BACKUP, FULL_RESTORE, options_script
from tree import (BACK_UP_MARKED, DATABASE, FILE, MARK_FOLDER, REGISTRY, UNMARK_FOLDER, TreeTest, click, collapse, expand,
                  images, keys)

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

    def test_folder_is_marked_with_all_below_it_at_that_moment(self):
        self.fill("A/B/C/deep", "A/B/b", "A/a", "A/rom", "A/.point/x", "AB/other", "Ax")
        (self.store / "A" / "none").mkdir()
        self.set_attributes("A/rom", 0x2000)
        self.quillbox(
            expand("Files") + click("Files\\A") + MARK_FOLDER + images({"Files\\A": 10, "Files\\AB": 9, "Files": 3}) +
            expand("Files\\A") +
            images({"Files\\A\\a": 7, "Files\\A\\B": 10, "Files\\A\\none": 9, "Files\\A\\rom": 8}) +
            expand("Files\\A\\B") + click("Files\\A\\B") + UNMARK_FOLDER +
            # What stands above keeps its tick.
            images({"Files\\A\\B": 9, "Files\\A\\B\\b": 6, "Files\\A": 10}) + BACK_UP_MARKED +
            expand("Files", "Files\\A") + click("Files\\A") + UNMARK_FOLDER + images({"Files\\A": 9, "Files\\A\\a": 6}) +
            MARK_FOLDER + MARK_FOLDER +
            # A folder with a leading point isn't looked into; the tick that it gets is gone when it is listed again.
            images({"Files\\A\\.point": 10}) + collapse("Files\\A") + expand("Files\\A") +
            images({"Files\\A\\.point": 9, "Files\\A\\B": 10}) + BACK_UP_MARKED +
            expand("Files") + click("Files\\A") + UNMARK_FOLDER + images({"Files\\A": 9, "Files": 2}))
        self.assertEqual(self.files(1), self.content_of("A/a"))
        self.assertEqual(self.files(2), self.content_of("A/a", "A/B/b", "A/B/C/deep"))

    def test_counts_and_ticks_that_are_no_exact_tally(self):
        self.fill("A/one", "A/two", "B/x", "Bc")
        (self.store / "empty").mkdir()
        self.quillbox(
            expand("Files", "Files\\A") + click("Files\\A\\one", "Files\\A\\two") + collapse("Files") +
            # Listed anew the folder counts one mark, so the first that goes takes its tick along.
            expand("Files", "Files\\A") + click("Files\\A\\one") + images({"Files\\A": 9, "Files\\A\\two": 7}) +
            click("Files\\A\\two") + images({"Files\\A": 9, "Files\\A\\two": 6, "Files": 2}) +
            click("Files\\A\\two") + images({"Files\\A": 10}) + click("Files\\A\\two") + images({"Files\\A": 9}) +
            # A folder beside the marked file, with a name that the file's begins with.
            click("Files\\Bc") + images({"Files\\B": 9}) + collapse("Files") + expand("Files", "Files\\B") +
            images({"Files\\B": 10, "Files\\B\\x": 6, "Files\\A": 9}) +
            # Nothing lies below it, and the tick goes when it is listed again.
            click("Files\\empty") + MARK_FOLDER + images({"Files\\empty": 10}) + collapse("Files") + expand("Files") +
            images({"Files\\empty": 9}) + BACK_UP_MARKED)
        self.assertEqual(self.files(), self.content_of("Bc"))

    def test_each_set_holds_the_marks_of_its_time(self):
        self.fill("a", "b", "F/c")
        self.quillbox(
            expand("Files") + click("Files\\a") + BACK_UP_MARKED +
            expand("Files", "Databases") + click("Files\\b", "Databases\\Contacts") + BACK_UP_MARKED +
            expand("Files") + click("Files\\a", "Databases\\Contacts", "Registry", "Files\\F") + MARK_FOLDER +
            BACK_UP_MARKED)
        self.assertEqual(set(self.items(1)), {(FILE, "\\a")})
        self.assertEqual(set(self.items(2)), {(FILE, "\\a"), (FILE, "\\b"), (DATABASE, "Contacts")})
        self.assertEqual(set(self.items(3)), {(FILE, "\\b"), (FILE, "\\F\\c"), (REGISTRY, "")})

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

    def test_keys_toggle_what_they_land_on(self):
        """The files alpha, beta and delta, gamma behind folder; their order is the host's."""
        self.fill("F/alpha", "F/beta", "F/delta", "F/gamma", "F/sub/below")
        listed = [path for path, _ in self.trees(expand("Files", "Files\\F") + "print tree\n")[0]]
        files = [path for path in listed if path.startswith("Files\\F\\")][1:]
        self.assertEqual(len(files), 4)
        start = expand("Files", "Files\\F") + click("Files\\F\\sub")
        for pressed, marked in ((keys("Down", "Down"), files[:2]),
                                (keys("Down", "Down", "Up"), files[1:2]),  # twice on the first
                                (keys("Down", "Ctrl+Down", "Down"), files[:2]),
                                (keys("Right", "Right", "Left", "Left"), []),  # below, and to the folder
                                (keys("Right", "Right"), ["Files\\F\\sub\\below"]),
                                (keys("Right", "Right", "Backspace"), ["Files\\F\\sub\\below"]),
                                (keys("B"), ["Files\\F\\beta"]),
                                (keys("End"), ["Registry"]), (keys("End", "Home"), ["Registry"]),
                                (keys("PageDown"), ["Registry"]), (keys("PageUp", "PageDown"), ["Registry"]),
                                (keys("Space", "Enter", "+", "*"), [])):
            with self.subTest(pressed=pressed):
                tree = self.trees(start + pressed + "print tree\n")[0]
                self.assertEqual(sorted(path for path, image in tree if image in (7, 16)), sorted(marked))

    def test_letters_typed_within_a_second_are_one_search(self):
        self.fill("F/alpha", "F/gamma", "F/sub/below")
        typed = expand("Files", "Files\\F") + click("Files\\F\\sub") + keys("G", "A") + "print tree\n"

        def marked():
            return [path for path, image in self.trees(typed)[0] if image in (7, 16)]
        # A host that stands still for a second in between makes two of it.
        self.assertIn(["Files\\F\\gamma"], (marked() for _ in range(5)))


if __name__ == "__main__":
    unittest.main()
