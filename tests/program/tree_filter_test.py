"""The file filter: what it shows, what it marks, what it keeps for the next start, and what is typed into it."""
import os
import sqlite3
import struct
import time
import unittest

from tree import BACK_UP_MARKED, MARK_FOLDER, TreeTest, click, collapse, expand, quoted

SHOW = expand("Files") + "print tree\n" + collapse("Files")
NEWER_THAN_OFFSET, SWITCHES_OFFSET = 536, 544
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
