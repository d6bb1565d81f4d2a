"""Files that stand where a run keeps an item for a moment: of a run that was killed, or the user's own."""
import contextlib
import sqlite3
import unittest

from device_contents import (BACKUP, RESTORE_DATABASES, SET, TEXT, ContentsTest, after, database, image, independent_set, item, lines,
                             write_set)
from program import FULL_RESTORE, options_script, shown

ONE = [[item(1, TEXT, "first")], [item(1, TEXT, "second")]]


class LeftoversTest(ContentsTest):
    def back_up(self, code=0):
        done = self.quillbox(options_script(log=True) + BACKUP.format(storage="\\Card"), code=code)
        self.assertEqual(shown(done.transcript, "box"), [])
        return [path.read_text() for path in (self.card / "QUILBOX").glob("*.LOG")]

    def test_a_database_with_a_record_that_cannot_be_read_is_stored_over_an_old_image(self):
        self.fill([database("b", ONE)])
        with contextlib.closing(sqlite3.connect(self.device / "device.db")) as opened:
            opened.execute("UPDATE store_record SET properties = x'ff' WHERE oid = (SELECT max(oid) FROM store_record)")
            opened.commit()
        self.write("b.CDB", b"of a killed run")
        self.back_up(code=4)
        self.assertEqual(self.content(), {})
        self.restore(before='answer "Database:*" yes\n')
        self.assert_holds([database("b", ONE[:1])])

    def test_the_whole_records_of_a_stream_that_was_cut_come_back_over_an_old_image(self):
        many = database("Big", [[item(1, TEXT, f"{number:0400}")] for number in range(300)])
        stream = independent_set.pack_stream(image(many))
        for stale in (False, True):
            with self.subTest(stale=stale):
                self.fill([])
                write_set(self.card, [many])
                data = self.card / "QUILBOX" / "QLBX0001.QDT"
                data.write_bytes(stream[:-20])
                if stale:
                    self.write("Big.CDB", b"of a killed run")
                told = self.quillbox('answer "Database:*" yes\n' + RESTORE_DATABASES, code=4).stderr
                self.assertIn('couldn\'t be restored whole: database "Big" (the set is damaged)', told)
                self.assertEqual("and was replaced: \"\\Big.CDB\"" in told, stale)
                self.assertEqual(self.content(), {})
                found = self.databases().splitlines()[1:]
                self.assertGreater(len(found), 100)
                self.assertEqual(found, lines(after(1, [many])).splitlines()[1:len(found) + 1])
                (self.device / "device.db").unlink()

    def test_a_restored_file_with_the_name_of_an_image_stays(self):
        self.fill([database("Target", ONE)])
        self.write("Target.CDB", b"the user's")
        # The set of the files first, then one of the databases, whose image takes the file's place; then it comes back.
        files = BACKUP.replace("check 1006", "check 1005").replace("check 1007\n", "").format(storage="\\Card")
        databases = BACKUP.replace("check 1007\n", "").format(storage="\\Card")
        told = self.quillbox('answer "Override*" no\n' + files + databases + FULL_RESTORE.format(set=SET), code=4).stderr
        self.assertIn('was replaced: "\\Target.CDB"', told)
        for _ in range(2):
            self.assertEqual(self.content(), {b"Target.CDB": b"the user's"})
            self.quillbox("idle\n")

    def test_a_file_that_is_not_the_runs_is_not_stored_as_the_registry(self):
        mine = self.write("TMVRegFile.QBR", b"mine")
        mine.chmod(0o444)
        self.back_up(code=4)
        self.assertEqual(mine.read_bytes(), b"mine")
        self.assertNotIn("registry", self.set_tool("list", self.card / "QUILBOX" / "QLBX0001.QLT"))


if __name__ == "__main__":
    unittest.main()
