"""What the user chooses in the dialogs of a run, and what happens if the user leaves one without a choice."""
import unittest

from companions import database
from device_contents import ContentsTest, texts
from independent_set import DATABASE, FILE
from independent_set import REGISTRY as REGISTRY_ITEM
from program import CONFIRM_REGISTRY, DATABASES, FILES, REGISTRY, SET, full_backup, options_script, shown

EVERYTHING = full_backup(FILES, DATABASES, REGISTRY)
SELECTION = f'command 40007\nwait "Select"\nselect 1003 "{SET}"\nok\nwait "Restore selection"\n'


class WindowChoicesTest(ContentsTest):
    def test_partial_restore_brings_back_the_selected_database_or_the_registry_alone(self):
        def fill(age):
            self.fill(*(database(name, texts(f"{age} {name}")) for name in ("Tasks", "Contacts")),
                      registry=f'[HKEY_USERS\\a]\r\n"age"="{age}"\r\n')

        def ages():
            """Of the two databases and of the registry, once a restored one has taken effect."""
            self.quillbox("idle\n")
            found = self.exported() + self.registry().decode("utf-16")
            return ["old" if sign.format("old") in found else "new" if sign.format("new") in found else None
                    for sign in ('"{} Tasks"', '"{} Contacts"', '"age"="{}"')]

        fill("old")
        self.write("Tasks", b"a file of the database's name")
        self.quillbox(EVERYTHING)
        fill("new")
        (self.store / "Tasks").unlink()
        self.assertEqual(ages(), ["new", "new", "new"])
        done = self.quillbox(SELECTION + 'expect 1007 "Select items to restore"\nprint 1006\nselect 1006 "Database:Tasks"\n'
                             'answer "*replace ?" yes\nok\nidle\n')
        self.assertEqual(done.text.splitlines(), ["Database:Contacts", "Database:Tasks", "File:\\Tasks", "Registry"])
        self.assertEqual(ages(), ["old", "new", "new"])
        self.quillbox(SELECTION + f'select 1006 "Registry"\nok\n{CONFIRM_REGISTRY}idle\n')
        self.assertEqual(ages(), ["old", "new", "old"])
        self.assertEqual(self.content(), {})

    def test_each_full_backup_takes_what_is_checked_this_time(self):
        self.fill(database("Tasks"))
        self.write("a", b"a")
        self.quillbox('answer "Override*" no\n' + EVERYTHING + full_backup(REGISTRY))
        self.assertEqual([{kind for kind, _ in self.items(number)} for number in (1, 2)],
                         [{FILE, DATABASE, REGISTRY_ITEM}, {REGISTRY_ITEM}])

    def test_keyboard_begins_where_the_user_types_and_a_sets_comment_stays(self):
        self.write("a", b"a")
        self.quillbox(
            'command 503\nwait "File filter"\ncheck 1014\nkey "T"\nkey "X"\nexpect 1016 "tx"\npress 1017\nkey "C"\n'
            'expect 1016 "c"\ncancel\nexpand "Files"\nclick "Files\\a"\ncommand 40005\nwait "Backup selected Item"\n'
            'key "H"\nexpect 1004 "h"\nok\nwait "Select"\nselect 1003 "\\Card"\nok\nidle\n'
            f'command 40006\nwait "Select"\nselect 1003 "{SET}"\nok\nwait "Full Restore"\nkey "X"\n'
            'expect 1004 "*Comments:\\nh"\ncancel\nidle\n')

    def test_exit_ends_the_program_and_keeps_the_settings(self):
        ended = self.quillbox(options_script(log=True) + "command 40002\nidle\n", code=1)
        self.assertIn("the program has ended", ended.said)
        self.quillbox('command 504\nwait "Options"\nexpect 1026 "[x] *"\ncancel\n')

    def test_dialog_left_by_its_close_box_is_left_without_a_choice(self):
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


if __name__ == "__main__":
    unittest.main()
