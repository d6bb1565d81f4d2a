"""Items that the user marks in the tree and backs up: what the set then holds, and what the next start remembers."""
import contextlib
import functools
import os
import re
import shutil
import sqlite3
import struct
import subprocess
import time
import unittest

from companions import BIN, database
from device_contents import NAMES, ContentsTest, texts
from independent_set import DATABASE, FILE, REGISTRY
from program import full_backup, full_restore, options_script

MARK_FOLDER = "command 500\n"
FILTER_DIALOG = 'command 503\nwait "File filter"\n'
NEWER_THAN_OFFSET, SWITCHES_OFFSET = 536, 544
SECONDS_TO_1970 = 11_644_473_600

BACK_UP_MARKED = """answer "Override*" no
command 40005
wait "Backup selected Item"
ok
wait "Select"
select 1003 "\\Card"
ok
idle
"""


def quoted(text):
    return '"' + text.replace('"', '""') + '"'


def act(verb, *paths):
    return "".join(f"{verb} {quoted(path)}\n" for path in paths)


expand, collapse, click = (functools.partial(act, verb) for verb in ("expand", "collapse", "click"))


def images(expected):
    return "".join(f"expect image {quoted(path)} {image}\n" for path, image in expected.items())


def filter_dialog(actions="", end="ok"):
    return f"{FILTER_DIALOG}{actions}{end}\nidle\n"


def add(*extensions):
    return "".join(f"type 1016 {quoted(each)}\npress 1017\nexpect 1016 \"\"\n" for each in extensions)


SHOW = expand("Files") + "print tree\n" + collapse("Files")


def printed_trees(output):
    """What each `print tree` printed: every item's path with its image, in the order of the screen."""
    trees = []
    above = []
    for line in output.splitlines():
        indent, text, image = re.fullmatch(r"( *)(.*) \[(\d+)\]", line).groups()
        above[len(indent) // 2:] = [text]
        if above == ["Databases"]:
            trees.append([])
        trees[-1].append(("\\".join(above), int(image)))
    return trees


class TreeTest(ContentsTest):
    """A device with three databases, of which the tree shows two."""

    def setUp(self):
        super().setUp()
        self.fill(database("Tasks", texts("Sand the rudder")), database("Contacts"), database("\\hidden"))

    def write_files(self, *names):
        for name in names:
            self.write(name, f"content of {name}".encode())

    def trees(self, script):
        return printed_trees(self.quillbox(script).text)

    def listed(self, script):
        """For each SHOW the names below "Files", without the card's folder."""
        return [sorted(path.removeprefix("Files\\") for path, _ in tree if path.startswith("Files\\") and
                       path != "Files\\Card") for tree in self.trees(script)]

    def files(self, number=1):
        """The files of a set with their content."""
        return {name: content for (kind, name), content in self.items(number).items() if kind == FILE}


class MarkingTest(TreeTest):
    def test_set_holds_exactly_what_is_marked_and_the_tree_shows_it(self):
        self.write_files("A/B/C/deep", "A/B/C/left", "A/B/middle", "A/near", "root", "twice", "rom")
        os.setxattr(self.store / "rom", "user.DOSATTRIB", b"0x40")
        start = {"Databases": 0, "Files": 2, "Registry": 15}
        every_folder = expand("Files", "Files\\A", "Files\\A\\B", "Files\\A\\B\\C")
        self.quillbox(
            images(start) + every_folder + images({"Files\\A": 9, "Files\\A\\B\\C\\deep": 6, "Files\\rom": 8}) +
            click("Files\\A\\B\\C\\deep") +
            images({"Files\\A\\B\\C\\deep": 7, "Files\\A\\B\\C": 10, "Files\\A\\B": 10, "Files\\A": 10, "Files": 3}) +
            click("Files\\A\\B\\middle", "Files\\root", "Files\\rom", "Files\\A\\B", "Files\\A\\B\\middle") +
            # Two quick clicks are two toggles.
            act("doubleclick", "Files\\twice", "Registry") +
            images({"Files\\A\\B\\middle": 6, "Files\\twice": 6, "Registry": 15, "Files\\A\\B": 10}) +
            expand("Databases") + click("Databases\\Tasks", "Databases\\Contacts", "Databases\\Contacts", "Registry") +
            images({"Databases\\Tasks": 12, "Databases\\Contacts": 11, "Databases": 1, "Registry": 16}) + BACK_UP_MARKED +
            images({"Files": 3, "Databases": 1, "Registry": 16, "Databases\\Tasks": 12}) + every_folder +
            images({"Files\\root": 7, "Files\\A\\near": 6, "Files\\A\\B\\C\\deep": 7, "Files\\A\\B\\C\\left": 6}) +
            click("Files\\root", "Files\\A\\B\\C\\deep", "Databases\\Tasks", "Registry") +
            images({**start, "Files\\A": 9, "Files\\A\\B\\C": 9, "Databases\\Tasks": 11}) +
            "command 40005\nexpect text \"No item to backup!\"\nok\nidle\n")
        items = self.items()
        self.assertEqual(set(items), {(FILE, "\\A\\B\\C\\deep"), (FILE, "\\root"), (DATABASE, "Tasks"), (REGISTRY, "")})
        self.assertEqual(self.files(), {"\\A\\B\\C\\deep": b"content of A/B/C/deep", "\\root": b"content of root"})
        self.assertIn("Sand the rudder".encode("utf-16-le"), items[DATABASE, "Tasks"])
        self.assertFalse((self.sets / "QLBX0002.QLT").exists())

    def test_commands_that_make_the_listing_stale_reset_it_and_no_others(self):
        self.write_files("a", "b", "F/c")
        marked = expand("Files", "Databases") + click("Files\\a", "Databases\\Tasks", "Registry")
        cancelled = "cancel\nidle\n"
        restore_cancelled = full_restore().replace('wait "Full Restore"\nok', 'wait "Full Restore"\ncancel')
        partial_cancelled = restore_cancelled.replace("40006", "40007").replace("Full Restore", "Restore selection")
        self.quillbox(full_backup())
        # What each leaves: whether "Files" was collapsed, and whether the marks are gone from the lists.
        for command, reset, cleared in (
                ("command 504\ncancel\n", False, False), ("command 40009\nok\n", False, False),
                ("command 503\nok\n", True, False), ("command 40010\ncancel\n", True, False),
                ("command 502\n" + cancelled, True, False), ("command 40003\n" + cancelled, True, False),
                (full_backup(), True, True), (full_backup().replace("40003", "502"), True, True),
                ("command 40005\n" + cancelled, True, False), (BACK_UP_MARKED, True, False),
                ("command 40006\n" + cancelled, True, False), ("command 40007\n" + cancelled, True, False),
                (restore_cancelled, True, True), (partial_cancelled, True, True), (full_restore(), True, True)):
            with self.subTest(command=command):
                for path in self.sets.glob("*2.*"):
                    path.unlink()
                roots = images({"Files": 2, "Databases": 0}) if cleared else ""
                trees = self.trees('answer "Override*" no\nanswer "*exists replace*" no\n' + marked + command +
                                   roots + "print tree\n" +
                                   expand("Files") + collapse("Databases") + expand("Databases") + "print tree\n")
                after, anew = ([path for path, _ in trees[0]], dict(trees[1]))
                self.assertEqual("Files\\a" not in after, reset)
                self.assertIn("Databases\\Tasks", after)
                self.assertEqual((anew["Files\\a"], anew["Files\\b"]), (6 if cleared else 7, 6))
                self.assertEqual(anew["Databases\\Tasks"], 11 if cleared else 12)
                self.assertEqual(anew["Registry"], 16)  # no run removes the mark

    def test_collapsed_files_are_expanded_by_the_first_reset_and_left_alone_once_listed(self):
        self.write_files("a")
        cancelled = filter_dialog(end="cancel") + "print tree\n"
        trees = self.trees(cancelled + collapse("Files") + cancelled + expand("Files") + cancelled)
        self.assertEqual([("Files\\a", 6) in tree for tree in trees], [True, False, False])

    def test_what_vanished_after_marking_is_reported_and_what_came_stays_out(self):
        self.write_files("F/stays", "F/goes", "gone/x", "gone/deep/y", "other", *(f"long/{'n' * 90}{n}" for n in range(100)))
        script = options_script(log=True) + (
            expand("Files") + click("Files\\F") + MARK_FOLDER + click("Files\\gone") + MARK_FOLDER +
            click("Files\\other") + expand("Files\\long") + "print tree\n" + BACK_UP_MARKED + expand("Files", "Files\\F") +
            images({"Files\\F\\came": 6, "Files\\F\\stays": 7, "Files\\other": 7}))
        # The tree that it prints doesn't fit the pipe, so the program stops here until the rest of it is read.
        with subprocess.Popen([BIN / "quillbox", "--device", self.device, "--script", self.file("script", script)],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, pipesize=4096) as process:
            process.stdout.read(1)
            (self.store / "F" / "goes").unlink()
            shutil.rmtree(self.store / "gone")
            self.write_files("F/came", "F/new/came")
            _, errors = process.communicate(timeout=600)
        self.assertEqual(process.returncode, 4, errors)
        self.assertIn(b"3 files aren't in the set, or not whole.", errors)
        self.assertEqual(errors.count(b"(it is gone)"), 3, errors)
        self.assertEqual(set(self.files()), {"\\F\\stays", "\\other"})
        self.assertEqual({line.split(": ", 1)[1] for line in self.log() if "ERR:" in line},
                         {f"ERR: File access file: {name} " for name in ("\\F\\goes", "\\gone\\x", "\\gone\\deep\\y")})


class NamesTest(TreeTest):
    def test_each_name_is_shown_marked_stored_and_restored(self):
        names = list(NAMES.items())
        for name, _ in names:
            self.write(name, b"content of " + name)
        before = self.content()
        chosen = names[::2] + names[1::4]
        self.quillbox(expand("Files") + images({"Files\\" + shown: 6 for _, shown in names}) +
                      click(*("Files\\" + shown for _, shown in chosen)) +
                      images({"Files\\" + shown: 7 if (name, shown) in chosen else 6 for name, shown in names}) +
                      BACK_UP_MARKED)
        self.assertEqual(self.files(), {"\\" + shown: before[name] for name, shown in chosen})
        for name, _ in chosen:
            os.unlink(os.path.join(os.fsencode(self.store), name))
        self.quillbox(full_restore())
        self.assertEqual(self.content(), before)

    def test_line_break_is_printed_on_one_line_and_a_path_that_fits_no_set_is_reported(self):
        folder = "f" * 150
        self.write_files(folder + "/new\nline", folder + "/" + "x" * 107, folder + "/" + "y" * 108,
                         folder + "/" + "z" * 107 + "/deep", folder + "/" + "w" * 108 + "/a folder counts as one")
        tree, = self.trees(expand("Files") + click("Files\\" + folder) + MARK_FOLDER +
                           'expect text "3 paths are too long and were left out. The first is:\\n*"\nok\n' +
                           expand("Files\\" + folder) + "print tree\n" + BACK_UP_MARKED)
        self.assertLessEqual({(f"Files\\{folder}\\{'x' * 107}", 7), (f"Files\\{folder}\\new\\nline", 7)}, set(tree))
        self.assertEqual(set(self.files()), {f"\\{folder}\\{'x' * 107}", f"\\{folder}\\new\nline"})


class FilterTest(TreeTest):
    def option(self, offset, form):
        """A field of the settings as the program left them."""
        with contextlib.closing(sqlite3.connect(self.device / "device.db")) as opened:
            (record,) = opened.execute("SELECT data FROM registry_value WHERE name = 'Option'").fetchone()
        return struct.unpack_from("<" + form, record, offset)

    def test_half_of_the_field_of_extensions_is_there_at_the_next_start(self):
        names = [f"{first}{second}{third}" for first in "abcde" for second in "xyz" for third in "12345"][:65]
        self.write_files(*("f." + name for name in names), "f." + names[32][:2])
        kept = sorted("f." + name for name in [*names[:32], names[32][:2]])
        all_that_fit, = self.listed(filter_dialog("check 1014\ncheck 1026\n" + add(*names)) + SHOW)
        self.assertEqual(all_that_fit, sorted("f." + name for name in names[:64]))
        # 32 entries, and the part of the next one that is in that half.
        again, = self.listed(filter_dialog(end="cancel") + SHOW)
        self.assertEqual(again, kept)
        more, cancelled = self.listed(filter_dialog(add(names[40])) + SHOW + filter_dialog(add(names[41]), "cancel") + SHOW)
        self.assertEqual(more, sorted([*kept, "f." + names[40]]))
        self.assertEqual(cancelled, kept)
        self.assertEqual(self.option(SWITCHES_OFFSET, "6I"), (0, 1, 1, 2, 4, 1))

    def test_what_has_one_of_the_checked_attributes_is_hidden_but_no_folder(self):
        attributes = {f"x{bits:02x}": bits for bits in (0, 1, 2, 4, 6, 0x20, 0x21, 0x46)}
        self.write_files(*attributes, ".dot", "mode", "F/x")
        for name, bits in {**attributes, "F": 0x27}.items():
            os.setxattr(self.store / name, "user.DOSATTRIB", b"0x%x" % bits)
        os.chmod(self.store / "mode", 0o444)
        attributes |= {".dot": 2, "mode": 1, "F": 0}
        script, expected, mask = "", [], 0
        for box, bit in ((1028, 1), (1027, 4), (1026, 2), (1021, 0x20)):
            mask |= bit
            script += filter_dialog(f"check {box}\n") + SHOW
            expected.append(sorted(name for name, bits in attributes.items() if not bits & mask))
        self.assertEqual(self.listed(script), expected)

    def test_file_of_exactly_the_chosen_time_is_shown(self):
        os.environ["TZ"] = "XST-9"
        self.addCleanup(os.environ.pop, "TZ")
        begin = time.time()
        self.quillbox(filter_dialog('check 1024\ndate 1024 "2026-03-15"\n'))
        passed = time.time() - begin
        (ticks,) = self.option(NEWER_THAN_OFFSET, "Q")
        seconds = ticks // 10_000_000 - SECONDS_TO_1970
        # The day as it was chosen, with the time of day of the user's clock, in local time.
        self.assertEqual(time.strftime("%Y-%m-%d", time.gmtime(seconds)), "2026-03-15")
        self.assertLessEqual((seconds - int(begin + 9 * 3600)) % 86400, passed + 1)
        nanoseconds = (ticks - SECONDS_TO_1970 * 10_000_000) * 100
        for name, moved in (("before", -100), ("exact", 0), ("after", 100)):
            for path in (self.write(name), self.write("F/" + name)):
                os.utime(path, ns=(nanoseconds + moved, nanoseconds + moved))
        listed, unfiltered = self.listed(SHOW + expand("Files") + click("Files\\F") + MARK_FOLDER + BACK_UP_MARKED +
                                         filter_dialog("uncheck 1024\n") + SHOW)
        self.assertEqual(listed, ["F", "after", "exact"])
        self.assertEqual(unfiltered, ["F", "after", "before", "exact"])
        self.assertEqual(set(self.files()), {"\\F\\exact", "\\F\\after"})

    def test_what_is_typed_as_an_extension_leads_nowhere(self):
        self.write_files("a.xxx", "b.b", "B.TXT", "c.Txt.bak", "none", "d.text", ".txt", "é.é", "F/below.xxx", "G/x", ".é")
        folders = ["F", "G"]
        all_files = sorted(set(os.listdir(self.store)) - {"Card"})
        for typed, files in (("txt", ["B.TXT", ".txt"]), ("x" * 5000, ["a.xxx"]), ("\\", []), ("..\\", []), ("\\x\\", []),
                             ("/", []), ('"<>', []), (" ", []), (".", []), ("\U0001F600a", []), ("É", [".é", "é.é"]),
                             ("?", [".é", "b.b", "é.é"]), ("F\\*", []), ("*", all_files), ("\t", []), ("%s", []), ("\x01", [])):
            with self.subTest(typed=typed[:10]):
                for settings in self.device.glob("device.db*"):
                    settings.unlink()
                listed = self.listed(filter_dialog("check 1014\n" + add(typed)) + SHOW)
                self.assertEqual(listed[0], sorted([*folders, *files]))


if __name__ == "__main__":
    unittest.main()
