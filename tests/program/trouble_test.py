"""Trouble from outside: devices that can't be opened, full cards, sets from elsewhere, and how the process ends."""
import os
import pathlib
import subprocess
import time
import unittest

from program import BIN, FULL_BACKUP, FULL_RESTORE, ProgramTest, options_script


class TroubleTest(ProgramTest):
    def test_device_in_use_is_refused_with_a_sentence(self):
        first = subprocess.Popen([BIN / "quillbox", "--device", self.device, "--script", "-"], stdin=subprocess.PIPE,
                                 stdout=subprocess.PIPE, text=True)
        try:
            # It reads its whole script before it starts, so its end is what shows that it has the device.
            first.stdin.write('command 40011\nwait "Options"\nprint text\nwait "never"\n')
            first.stdin.close()
            self.assertIn("Options", first.stdout.readline())
            second = self.quillbox("idle\n", code=1)
            self.assertIn("open in another Quillbox", second.stderr)
            self.assertIn(str(self.device), second.stderr)
        finally:
            first.kill()
            first.wait()
            first.stdout.close()
        self.quillbox("idle\n")

    def test_folders_that_are_no_device_are_left_alone(self):
        documents = self.base / "documents"
        documents.mkdir()
        (documents / "letter.txt").write_text("mine")
        refused = self.quillbox("idle\n", device=documents, code=1)
        self.assertIn(str(documents), refused.stderr)
        self.assertEqual(os.listdir(documents), ["letter.txt"])
        (self.base / "file").write_text("no folder")
        self.quillbox("idle\n", device=self.base / "file", code=1)
        self.quillbox("idle\n", device=self.base / "file" / "below", code=1)

    def test_usage_is_told(self):
        for arguments in (["--card", "nothing"], ["--card", "C=/nowhere"], ["--unknown"],
                          ["--card", f"C={self.card},capacity=many"], ["--card", f"..={self.card}"]):
            finished = subprocess.run([BIN / "quillbox", "--device", self.device, *arguments, "--script", "-"],
                                      input="idle\n", capture_output=True, text=True)
            self.assertIn(finished.returncode, (1, 2), arguments)
            self.assertTrue(finished.stderr.strip(), arguments)
        self.assertIn("line 2", self.quillbox("idle\nfly\n", code=2).stderr)
        failed = self.quillbox('idle\ncommand 40009\nexpect text "nothing like it"\n', code=1)
        self.assertIn("line 3", failed.stderr)
        self.assertIn("Quillbox v1.0", failed.stderr)

    def test_full_card_keeps_every_source(self):
        for number in range(50):
            self.write(f"file{number}", os.urandom(2000))
        before = self.content()
        card = self.base / "stick"
        card.mkdir()
        told = self.quillbox(options_script(log=True, delete=True) + FULL_BACKUP.format(comment="", storage="\\Stick"),
                             "--card", f"Stick={card},capacity=40000", code=4).stderr
        self.assertIn("the disk is full", told)
        left = self.content()
        self.assertTrue(0 < len(left) < 50, "some fitted, some didn't")
        self.assertLessEqual(sum(p.stat().st_size for p in card.rglob("*") if p.is_file()), 40_000)
        self.quillbox(options_script(policy=1024) + FULL_RESTORE.format(set="\\Stick\\QUILBOX\\QLBX0001.QLT"), "--card",
                      f"Stick={card}")
        self.assertEqual(self.content(), before)

    def test_what_is_in_use_is_left_out_and_told(self):
        for name in ("free", "busy", "busy too"):
            self.write(name, b"content")
        with open(self.store / "busy", "ab"), open(self.store / "busy too", "ab"):
            told = self.quillbox(FULL_BACKUP.format(comment="", storage="\\Card"), code=4).stderr
        self.assertRegex(told, r"2 files or folders couldn't be read\. The first is .*busy.* \(another program uses it\)")
        self.assertEqual(self.set_tool("verify", self.card / "QUILBOX" / "QLBX0001"), "Sound: 1 item.\n")

    def test_folder_of_the_user_is_backed_up_and_restored_in_place(self):
        documents = self.base / "documents"
        (documents / "deep").mkdir(parents=True)
        (documents / "deep" / "letter").write_text("dear")
        os.symlink("/etc/hostname", documents / "link")
        folder = ["--folder", f"Documents={documents}"]
        self.quillbox(FULL_BACKUP.format(comment="", storage="\\Card"), *folder)
        (documents / "deep" / "letter").unlink()
        self.quillbox(FULL_RESTORE.format(set="\\Card\\QUILBOX\\QLBX0001.QLT"), *folder)
        self.assertEqual((documents / "deep" / "letter").read_text(), "dear")
        self.assertEqual(self.set_tool("list", self.card / "QUILBOX" / "QLBX0001").count("link"), 0)

    def test_ninety_nine_sets_are_offered_and_a_hundredth_is_not_made(self):
        self.write("a", b"a")
        self.quillbox(FULL_BACKUP.format(comment="", storage="\\Card"))
        sets = self.card / "QUILBOX"
        for number in range(2, 100):
            for ending in ("QLT", "QDT"):
                (sets / f"QLBX{number:04d}.{ending}").write_bytes((sets / f"QLBX0001.{ending}").read_bytes())
        before = {p.name: p.read_bytes() for p in sets.iterdir()}
        finished = self.quillbox('answer "Override*" no\n' + FULL_BACKUP.format(comment="", storage="\\Card") +
                                 'command 40006\nwait "Select"\nprint 1003\ncancel\nidle\n')
        self.assertEqual(len(finished.stdout.split()), 99)
        self.assertEqual({p.name: p.read_bytes() for p in sets.iterdir()}, before)

    def test_killed_backup_leaves_a_device_that_opens(self):
        for number in range(3000):
            self.write(f"{number // 100}/{number}", os.urandom(300))
        for wait in (0.05, 0.1, 0.2, 0.3):
            process = subprocess.Popen([BIN / "quillbox", "--device", self.device, "--script", "-"],
                                       stdin=subprocess.PIPE, text=True)
            process.stdin.write('answer "Override*" no\n' + FULL_BACKUP.format(comment="", storage="\\Card"))
            process.stdin.close()
            time.sleep(wait)
            process.kill()
            process.wait()
        before = self.content()
        self.quillbox('answer "Override*" no\n' + FULL_BACKUP.format(comment="", storage="\\Card"))
        newest = sorted((self.card / "QUILBOX").glob("*.QLT"))[-1].name
        self.empty_store()
        self.quillbox(FULL_RESTORE.format(set=f"\\Card\\QUILBOX\\{newest}"))
        self.assertTrue(self.content() == before)


if __name__ == "__main__":
    unittest.main()
