"""The user's choices in the tree and in the dialogs: what the set then contains, and what remains when a dialog is
left."""
import functools
import os
import re
import shutil
import subprocess

from companions import BIN, database
from device_contents import NAMES, ContentsTest, texts
from independent_set import FILE
from program import DATABASES, FILES, REGISTRY, SET, full_backup, full_restore, options_script, shown

EVERYTHING = full_backup(FILES, DATABASES, REGISTRY)
SELECTION = f'command 40007\nwait "Select"\nselect 1003 "{SET}"\nok\nwait "Restore selection"\n'
MARK_FOLDER = "command 500\n"

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


def printed_trees(output):
    """Returns the output of each `print tree`: every item's path with its image, in the order of the screen."""
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

    def files(self, number=1):
        """Returns the files of a set with their content."""
        return {name: content for (kind, name), content in self.items(number).items() if kind == FILE}


class MarkingTest(TreeTest):
    def test_commands_that_make_the_listing_stale_reset_it_and_no_others(self):
        self.write_files("a", "b", "F/c")
        marked = expand("Files", "Databases") + click("Files\\a", "Databases\\Tasks", "Registry")
        cancelled = "cancel\nidle\n"
        restore_cancelled = full_restore().replace('wait "Full Restore"\nok', 'wait "Full Restore"\ncancel')
        self.quillbox(full_backup())
        # For each command: whether it collapses "Files", and whether it removes the marks from the lists.
        for command, reset, cleared in (
                ("command 504\ncancel\n", False, False), ("command 40009\nok\n", False, False),
                ("command 503\nok\n", True, False), ("command 40010\ncancel\n", True, False),
                ("command 502\n" + cancelled, True, False), (full_backup(), True, True),
                ("command 40005\n" + cancelled, True, False), (BACK_UP_MARKED, True, False),
                ("command 40006\n" + cancelled, True, False), ("command 40007\n" + cancelled, True, False),
                (restore_cancelled, True, True), (full_restore(), True, True)):
            with self.subTest(command=command):
                for path in self.sets.glob("*2.*"):
                    path.unlink()
                trees = self.trees('answer "Override*" no\nanswer "*exists replace*" no\n' + marked + command + "print tree\n" +
                                   expand("Files") + collapse("Databases") + expand("Databases") + "print tree\n")
                after, anew = ([path for path, _ in trees[0]], dict(trees[1]))
                self.assertEqual("Files\\a" not in after, reset)
                self.assertIn("Databases\\Tasks", after)
                self.assertEqual((anew["Files\\a"], anew["Databases\\Tasks"]), (6, 11) if cleared else (7, 12))
                self.assertEqual(anew["Registry"], 16)  # no run removes the mark

    def test_collapsed_files_are_expanded_by_the_first_reset_and_left_alone_once_listed(self):
        self.write_files("a")
        cancelled = "command 503\ncancel\nidle\nprint tree\n"
        trees = self.trees(cancelled + collapse("Files") + cancelled + expand("Files") + cancelled)
        self.assertEqual([("Files\\a", 6) in tree for tree in trees], [True, False, False])

    def test_what_vanished_after_marking_is_reported_and_what_came_stays_out(self):
        self.write_files("F/stays", "F/goes", "gone/x", "gone/deep/y", "other", *(f"long/{'n' * 90}{n}" for n in range(100)))
        script = options_script(log=True) + (
            expand("Files") + click("Files\\F") + MARK_FOLDER + click("Files\\gone") + MARK_FOLDER +
            click("Files\\other") + expand("Files\\long") + "print tree\n" + BACK_UP_MARKED + expand("Files", "Files\\F") +
            images({"Files\\F\\came": 6, "Files\\F\\stays": 7, "Files\\other": 7}))
        # The printed tree is larger than the pipe. So the program blocks at this point until the test reads the rest.
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
        for host, _ in names:
            self.write(host, b"content of " + host)
        before = self.content()
        chosen = names[::2] + names[1::4]
        self.quillbox(expand("Files") + images({"Files\\" + name: 6 for _, name in names}) +
                      click(*("Files\\" + name for _, name in chosen)) +
                      images({"Files\\" + name: 7 if (host, name) in chosen else 6 for host, name in names}) +
                      BACK_UP_MARKED)
        self.assertEqual(self.files(), {"\\" + name: before[host] for host, name in chosen})
        for host, _ in chosen:
            os.unlink(os.path.join(os.fsencode(self.store), host))
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


class DialogTest(ContentsTest):
    def test_focus_begins_in_the_edit_of_a_dialog_and_a_sets_comment_is_read_only(self):
        self.write("a", b"a")
        self.quillbox(
            'command 503\nwait "File filter"\ncheck 1014\nkey "T"\nkey "X"\nexpect 1016 "tx"\npress 1017\nkey "C"\n'
            'expect 1016 "c"\ncancel\nexpand "Files"\nclick "Files\\a"\ncommand 40005\nwait "Backup selected Item"\n'
            'key "H"\nexpect 1004 "h"\nok\nwait "Select"\nselect 1003 "\\Card"\nok\nidle\n'
            f'command 40006\nwait "Select"\nselect 1003 "{SET}"\nok\nwait "Full Restore"\nkey "X"\n'
            'expect 1004 "*Comments:\\nh"\ncancel\nidle\n')
        self.assertIn('window message "Info?" text "Override \\Card\\QUILBOX\\QLBX0001.QLT file" buttons yes,no default no',
                      self.quillbox('answer "*" no\n' + full_backup()).transcript)

    def test_a_dialog_closed_by_its_close_box_makes_no_choice(self):
        self.write("a", b"old")
        self.quillbox(EVERYTHING)
        stored = self.content(self.card)
        self.write("a", b"new")
        unchecked = "".join(f'expect {box} "[ ] *"\n' for box in (FILES, DATABASES, REGISTRY))
        backup = f'command 40003\nwait "Full Backup"\n{unchecked}expect 1004 ""\ntype 1004 "no"\ncheck {FILES}\n'
        choose_set = f'command 40006\nwait "Select"\nselect 1003 "{SET}"\n'
        left = 'answer "*" yes\n' + "close\nidle\n".join([
            backup, backup + 'ok\nwait "Select"\nselect 1003 "Main device"\n',
            'expand "Files"\nclick "Files\\a"\ncommand 40005\nwait "Backup selected Item"\n', choose_set,
            choose_set + 'ok\nwait "Full Restore"\n', SELECTION + 'select 1006 "File:\\a"\n', ""])
        self.assertEqual(shown(self.quillbox(left).transcript, "answer"), [])
        self.assertEqual(self.content(self.card), stored)
        self.assertEqual(self.content(), {b"a": b"new"})
