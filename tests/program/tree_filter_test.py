"""The file filter: what it shows, what it marks, what it keeps for the next start, and what is typed into it."""
import os
import sqlite3
import struct
import time
import unittest

from program import options_script
from tree import BACK_UP_MARKED, MARK_FOLDER, TreeTest, click, collapse, expand, images, quoted

SHOW = expand("Files") + "print tree\n" + collapse("Files")
ATTRIBUTE_BOXES = {0x20: 1021, 0x02: 1026, 0x04: 1027, 0x01: 1028}
DELETE_OFFSET, EXTENSIONS_OFFSET, NEWER_THAN_OFFSET, SWITCHES_OFFSET = 4, 16, 536, 544
SECONDS_TO_1970 = 11_644_473_600


def filter_dialog(actions="", end="ok"):
    return f'command 503\nwait "File filter"\n{actions}{end}\nidle\n'


def add(*extensions):
    return "".join(f"type 1016 {quoted(each)}\npress 1017\nexpect 1016 \"\"\n" for each in extensions)


class TreeFilterTest(TreeTest):
    def fill(self, *names):
        for name in names:
            self.write(name, name.encode())

    def listed(self, script):
        """For each SHOW what stands below "Files", but for the card's folder."""
        return [sorted(path.removeprefix("Files\\") for path, _ in tree if path.startswith("Files\\") and
                       path != "Files\\Card") for tree in self.trees(script)]

    def option(self, offset, form):
        """A field of the settings as the program left them."""
        with sqlite3.connect(self.device / "device.db") as database:
            (record,) = database.execute("SELECT data FROM registry_value WHERE name = 'Option'").fetchone()
        database.close()
        return struct.unpack_from("<" + form, record, offset)

    def test_extension_without_case_and_in_whole(self):
        self.fill("a.txt", "B.TXT", "c.Txt.bak", "d.text", "txt", ".txt", "e.tx", "f.", "g.c", "h.cc", "i.doc", "no",
                  "only/x.c", "other/x.doc", "deep/er/x.doc", "named.c/x.doc")
        nothing, some, more, all_again = self.listed(
            filter_dialog("check 1014\n") + SHOW + filter_dialog(add("txt", "TXT", "c", "")) + SHOW +
            filter_dialog(add("jpeg", "DOC")) + SHOW + filter_dialog("uncheck 1014\n") + SHOW)
        folders = ["deep", "named.c", "only", "other"]
        self.assertEqual(nothing, folders)
        # A folder that fits the pattern comes with it once more.
        self.assertEqual(some, sorted(["a.txt", "B.TXT", ".txt", "g.c", *folders, "named.c"]))
        self.assertEqual(more, sorted([*some, "i.doc"]))
        self.assertEqual(all_again, sorted(set(os.listdir(self.store)) - {"Card"}))

    def test_folders_have_a_button_for_what_the_filter_shows(self):
        self.fill("only/x.c", "other/x.doc", "deep/er/x.doc")
        (self.store / "empty").mkdir()
        script = filter_dialog("check 1014\n" + add("c")) + expand("Files", "Files\\only", "Files\\deep")
        for folder in ("other", "empty"):
            self.assertIn("can't be expanded", self.quillbox(script + expand("Files\\" + folder), code=1).stderr)
        # Attributes and dates hide files, and the button stays.
        self.assertEqual(self.listed(filter_dialog('uncheck 1014\ncheck 1024\ndate 1024 "2400-01-01"\n') +
                                     expand("Files", "Files\\only") + "print tree\n"),
                         [["deep", "empty", "only", "other"]])

    def test_folder_is_marked_with_what_the_extension_filter_doesnt_show(self):
        self.fill("F/a.txt", "F/b.doc", "F/G/c.doc", "z.txt")
        self.set_attributes("F/b.doc", 4)
        self.quillbox(filter_dialog("check 1014\ncheck 1027\n" + add("txt")) + expand("Files", "Files\\F") +
                      click("Files\\F") + MARK_FOLDER + images({"Files\\F\\a.txt": 7, "Files\\F\\G": 10}) +
                      BACK_UP_MARKED)
        self.assertEqual(set(self.files()), {"\\F\\a.txt", "\\F\\G\\c.doc"})

    def test_extensions_that_outlive_the_program(self):
        names = [f"{first}{second}{third}" for first in "abcde" for second in "xyz" for third in "12345"][:65]
        self.fill(*("f." + name for name in names), "f." + names[32][:2])
        kept = sorted("f." + name for name in [*names[:32], names[32][:2]])
        all_that_fit, = self.listed(filter_dialog("check 1014\ncheck 1026\n" + add(*names)) + SHOW)
        self.assertEqual(all_that_fit, sorted("f." + name for name in names[:64]))
        # Half of the field comes back: 32 entries, and of the next what stands in it.
        again, = self.listed(filter_dialog(end="cancel") + SHOW)
        self.assertEqual(again, kept)
        more, cancelled = self.listed(filter_dialog(add(names[40])) + SHOW + filter_dialog(add(names[41]), "cancel") + SHOW)
        self.assertEqual(more, sorted([*kept, "f." + names[40]]))
        self.assertEqual(cancelled, kept)
        self.assertEqual(self.option(SWITCHES_OFFSET, "6I"), (0, 1, 1, 2, 4, 1))

    def test_removal_sorts_and_takes_the_selected_row(self):
        finished = self.quillbox(filter_dialog(
            "check 1014\n" + add("txt", "C", "bmp") + "press 1018\nselect 1015 \"bmp\"\npress 1018\nprint 1015\n"))
        self.assertEqual(finished.stdout.split(), ["C", "txt"])
        self.assertEqual(self.option(EXTENSIONS_OFFSET, "12s"), ("C\0txt\0".encode("utf-16-le"),))

    def test_cancel_goes_back_to_the_first_opening_of_this_start(self):
        self.fill("a.txt", "b.doc", ".h")
        self.quillbox(filter_dialog("check 1026\n"))
        first, second, third = self.listed(
            SHOW + filter_dialog("uncheck 1026\ncheck 1014\n" + add("txt")) + SHOW +
            filter_dialog("check 1027\n" + add("doc"), "cancel") + SHOW + filter_dialog("expect 1015 \"txt\"\n", "close"))
        self.assertEqual((first, second, third), (["a.txt", "b.doc"], ["a.txt"], ["a.txt", "b.doc"]))
        self.assertEqual(self.option(SWITCHES_OFFSET, "4I"), (0, 0, 1, 2))
        # The start is another one, and with it what Cancel goes back to.
        self.assertEqual(self.listed(filter_dialog("uncheck 1026\n") + filter_dialog() + SHOW)[0], [".h", "a.txt", "b.doc"])
        self.assertEqual(self.listed(filter_dialog("check 1026\n", "cancel") + SHOW)[0], [".h", "a.txt", "b.doc"])

    def test_cancelled_filter_never_turns_deletion_on_again(self):
        self.fill("kept")
        self.quillbox(
            options_script(delete=True, log=False) + filter_dialog("check 1027\n") +
            options_script(delete=False, log=True) + filter_dialog("uncheck 1027\n", "cancel") +
            'command 504\nwait "Options"\nexpect 1022 "[ ] *"\nexpect 1026 "[x] *"\ncancel\n' +
            expand("Files") + click("Files\\kept") + BACK_UP_MARKED)
        self.assertEqual(self.content(), {b"kept": b"kept"})
        self.assertEqual(self.option(DELETE_OFFSET, "3I"), (0, 0, 1))
        self.assertEqual(self.option(SWITCHES_OFFSET, "4I"), (0, 0, 0, 0))

    def test_file_of_exactly_that_time_is_shown(self):
        os.environ["TZ"] = "XST-9"
        self.addCleanup(os.environ.pop, "TZ")
        begin = time.time()
        self.quillbox(filter_dialog('check 1024\ndate 1024 "2026-03-15"\n'))
        passed = time.time() - begin
        (ticks,) = self.option(NEWER_THAN_OFFSET, "Q")
        seconds = ticks // 10_000_000 - SECONDS_TO_1970
        # The day as it was chosen, with the time of day as the user's clock had it, and no zone taken off.
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

    def test_date_that_was_never_touched_is_set_by_ok_alone(self):
        self.quillbox(filter_dialog("check 1024\nuncheck 1024\n", "cancel"))
        self.assertEqual(self.option(NEWER_THAN_OFFSET, "Q"), (0,))
        self.quillbox(filter_dialog())
        self.assertNotEqual(self.option(NEWER_THAN_OFFSET, "Q"), (0,))
        self.assertEqual(self.option(SWITCHES_OFFSET, "4I"), (0, 0, 0, 0))

    def test_every_combination_of_attributes_hides_what_has_one_of_them(self):
        attributes = {f"x{bits:02x}": bits for bits in (0, 1, 2, 4, 7, 0x20, 0x21, 0x26, 0x27, 0x46)}
        self.fill(*attributes, ".dot", "mode", "F/x")
        for name, bits in attributes.items():
            self.set_attributes(name, bits)
        self.set_attributes("F", 0x27)
        os.chmod(self.store / "mode", 0o444)
        attributes |= {".dot": 2, "mode": 1, "F": 0}
        # Each opening of the dialog changes one box, until every mask has been there.
        script = ""
        masks = [0]
        for step in range(1, 17):
            script += SHOW
            bit = sorted(ATTRIBUTE_BOXES)[min((step & -step).bit_length() - 1, 3)]
            masks.append(masks[-1] ^ bit)
            script += filter_dialog(f"{'check' if masks[-1] & bit else 'uncheck'} {ATTRIBUTE_BOXES[bit]}\n")
        self.assertEqual(len(set(masks)), 16)
        shown = [sorted(name for name, bits in attributes.items() if not bits & mask) for mask in masks]
        self.assertEqual(self.listed(script), shown[:-1])
        self.quillbox(filter_dialog("check 1028\ncheck 1027\n"))
        self.assertEqual(self.listed(SHOW)[0], sorted(name for name, bits in attributes.items() if not bits & 5))

    def test_what_is_typed_as_an_extension_leads_nowhere(self):
        self.fill("a.xxx", "b.b", "none", "é.é", "F/below.xxx", "G/x", ".é")
        folders = ["F", "G"]
        for typed, files in (("x" * 5000, ["a.xxx"]), ("\\", []), ("..\\", []), ("\\x\\", []), ("/", []), ('"<>', []),
                             (" ", []), (".", []), ("\U0001F600a", []), ("É", [".é", "é.é"]), ("?", [".é", "b.b", "é.é"]),
                             ("F\\*", []), ("*", ["a.xxx", "b.b", "none", "é.é", ".é", *folders]),
                             ("\t", []), ("%s", []), ("\x01", [])):
            with self.subTest(typed=typed[:10]):
                for settings in self.device.glob("device.db*"):
                    settings.unlink()
                listed = self.listed(filter_dialog("check 1014\n" + add(typed)) + SHOW)
                self.assertEqual(listed[0], sorted([*folders, *files]))


if __name__ == "__main__":
    unittest.main()
