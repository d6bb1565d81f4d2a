"""Every message, question, progress text and log line, exactly and in its order, with its default answer."""
import re
import unittest

from program import FULL_BACKUP, FULL_RESTORE, ProgramTest, options_script, shown

SET = "\\Card\\QUILBOX\\QLBX0001.QLT"


class TextsTest(ProgramTest):
    def seen(self, script, *arguments):
        """What the user sees, without the main window and what the script does."""
        transcript = self.quillbox(script, *arguments).transcript
        return [line for line in shown(transcript, "window", "text", "answer") if not line.startswith("window main")]

    def progress(self, lines):
        return [line for line in lines if line.startswith(("window progress", "text"))]

    def boxes(self, lines):
        return [line for line in lines if line.startswith("window message")]

    def test_full_backup_and_its_log(self):
        self.write("a.txt", b"a" * 3000)
        self.write("folder/b.txt", b"")
        script = options_script(log=True) + FULL_BACKUP.format(comment="mine", storage="\\Card")
        lines = self.seen(script)
        self.assertEqual(lines[0].split(" text ")[0], 'window dialog "Options"')
        self.assertEqual(lines[1].split(" text ")[0], 'window dialog "Full Backup"')
        self.assertEqual(self.progress(lines)[:1],
                         ['window progress "Construct File List" text "Computing list to backup"'])
        self.assertIn('window progress "Backuping Files" text "Backuping Files"', lines)
        texts = [line for line in lines if line.startswith('text "Backuping Files"')]
        self.assertIn('text "Backuping Files" 1002 "File: \\a.txt"', texts)
        self.assertIn('text "Backuping Files" 1002 "File: \\folder\\b.txt"', texts)
        self.assertIn('text "Backuping Files" 1029 "Backuped: 0"', texts)
        self.assertEqual(self.boxes(lines), [], "a good backup ends without a message")
        log = (self.card / "QUILBOX" / "BACKUP0001.LOG").read_bytes().decode()
        messages = [re.fullmatch(r"LOG\(\d\d:\d\d:\d\d\): (.*) ", line) for line in log.split("\r\n")[:-1]]
        self.assertTrue(all(messages), log)
        self.assertEqual(sorted(match[1] for match in messages),
                         ["INF: End file backup\\a.txt", "INF: End file backup\\folder\\b.txt",
                          "INF: Start file backup: \\a.txt", "INF: Start file backup: \\folder\\b.txt"])

    def test_restore_and_its_question(self):
        self.write("a.txt", b"a" * 3000)
        self.seen(FULL_BACKUP.format(comment="two\nlines".replace("\n", " "), storage="\\Card"))
        lines = self.seen('answer "File:*" no\n' + FULL_RESTORE.format(set=SET))
        self.assertEqual(lines[0].split(" text ")[0], 'window dialog "Select"')
        self.assertIn("Select backup file", lines[0])
        self.assertTrue(lines[1].startswith('window dialog "Full Restore" text '))
        self.assertIn("Backup date:", lines[1])
        self.assertIn("(", lines[1])
        self.assertIn("\\nComments:\\ntwo lines", lines[1])
        self.assertNotIn("Items to backup", lines[1], "the list and its label are hidden")
        self.assertEqual(self.boxes(lines), ['window message "Warning" text "File:\\a.txt exists replace ?" '
                                             'buttons yes,no default no'])
        self.assertEqual(self.progress(lines), ['window progress "Restoring Files" text "Restoring Files"',
                                                'text "Restoring Files" 1002 "File: \\a.txt"'])
        (self.store / "a.txt").unlink()
        lines = self.seen(FULL_RESTORE.format(set=SET))
        self.assertIn('text "Restoring Files" 1029 "Restored: 0 "', lines)

    def test_messages_for_what_cannot_begin(self):
        lines = self.seen("command 40005\nok\nidle\ncommand 40006\nok\nidle\ncommand 40003\nwait \"Full Backup\"\nok\nok\nidle\n")
        self.assertEqual(self.boxes(lines), ['window message "Info" text "No item to backup!" buttons ok default ok',
                                             'window message "Error" text "No Backup File found" buttons ok default ok',
                                             'window message "Info" text "No item to backup!" buttons ok default ok'])

    def test_chooser_wants_a_row(self):
        self.write("a", b"")
        lines = self.seen("""command 40003
check 1005
ok
wait "Select"
expect 1002 "Select your storage"
expect 1003 "Main device"
ok
expect text "You must select an item"
ok
wait "Select"
cancel
idle
""")
        self.assertEqual(self.boxes(lines), ['window message "Error" text "You must select an item" buttons ok default ok'])
        self.assertFalse((self.card / "QUILBOX").exists())

    def test_override_is_asked_for_each_taken_number_and_no_is_the_default(self):
        self.write("a", b"1")
        backup = FULL_BACKUP.format(comment="", storage="\\Card")
        self.seen(backup)
        first = (self.card / "QUILBOX" / "QLBX0001.QLT").read_bytes()
        lines = self.seen(backup.replace("ok\nidle", 'ok\nexpect text "Override*"\nkey "Enter"\nidle'))
        self.assertEqual(self.boxes(lines), [f'window message "Info?" text "Override {SET} file" buttons yes,no default no'])
        self.assertEqual((self.card / "QUILBOX" / "QLBX0001.QLT").read_bytes(), first)
        self.assertTrue((self.card / "QUILBOX" / "QLBX0002.QDT").exists())
        lines = self.seen('answer "Override*" no\n' + backup)
        self.assertEqual(len(self.boxes(lines)), 2)


if __name__ == "__main__":
    unittest.main()
