"""Every message, question, progress text and log line, exactly and in its order, with its default answer."""
import re
import unittest

from program import ProgramTest, full_backup, full_restore, options_script, shown


class TextsTest(ProgramTest):
    def seen(self, script, *kinds):
        """What the user sees, without the main window. `kinds` names how the lines begin that are wanted."""
        lines = shown(self.quillbox(script).transcript, "window", "text", "answer")
        return [line for line in lines if not line.startswith("window main") and (not kinds or line.startswith(kinds))]

    def test_full_backup_and_its_log(self):
        self.write("a.txt", b"a" * 3000)
        self.write("folder/b.txt")
        lines = self.seen(options_script(log=True) + full_backup(comment="mine"))
        self.assertEqual([line.split(" text ")[0] for line in lines[:2]],
                         ['window dialog "Options"', 'window dialog "Full Backup"'])
        self.assertEqual(next(line for line in lines if line.startswith("window progress")),
                         'window progress "Construct File List" text "Computing list to backup"')
        self.assertLessEqual({'window progress "Backuping Files" text "Backuping Files"',
                              'text "Backuping Files" 1002 "File: \\a.txt"',
                              'text "Backuping Files" 1002 "File: \\folder\\b.txt"',
                              'text "Backuping Files" 1029 "Backuped: 0"'}, set(lines))
        self.assertFalse(any(line.startswith("window message") for line in lines), "a good backup ends without a message")
        messages = [re.fullmatch(r"LOG\(\d\d:\d\d:\d\d\): (.*) ", line)[1] for line in self.log()]
        self.assertEqual(sorted(messages), ["INF: End file backup\\a.txt", "INF: End file backup\\folder\\b.txt",
                                            "INF: Start file backup: \\a.txt", "INF: Start file backup: \\folder\\b.txt"])

    def test_restore_and_its_question(self):
        self.write("a.txt", b"a" * 3000)
        self.seen(full_backup(comment="two lines"))
        chooser, dialog, *progress = self.seen('answer "File:*" no\n' + full_restore(), "window", "text")
        self.assertRegex(chooser, '^window dialog "Select" text .*Select backup file')
        self.assertRegex(dialog, r'^window dialog "Full Restore" text .*Backup date:.*\(.*\\nComments:\\ntwo lines')
        self.assertNotIn("Items to backup", dialog, "the list and its label are hidden")
        self.assertEqual(progress, ['window progress "Restoring Files" text "Restoring Files"',
                                    'text "Restoring Files" 1002 "File: \\a.txt"',
                                    'window message "Warning" text "File:\\a.txt exists replace ?" buttons yes,no default no'])
        (self.store / "a.txt").unlink()
        self.assertIn('text "Restoring Files" 1029 "Restored: 0 "', self.seen(full_restore()))

    def test_messages_for_what_cannot_begin(self):
        nothing = 'window message "Info" text "No item to backup!" buttons ok default ok'
        script = 'command 40005\nok\nidle\ncommand 40006\nok\nidle\ncommand 40003\nwait "Full Backup"\nok\nok\nidle\n'
        self.assertEqual(self.seen(script, "window message"), [
            nothing, 'window message "Error" text "No Backup File found" buttons ok default ok', nothing])


if __name__ == "__main__":
    unittest.main()
