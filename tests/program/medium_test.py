"""A removable medium: it appears as a card when it is mounted, stores one backup, and is pulled out during another one.

The medium is a tmpfs that is also mounted at a second path, so that its content can be read after it was pulled out.
"""
import os
import signal
import subprocess
import time

import card_reader
from companions import BIN
from program import ProgramTest, full_backup, options_script

FILES = 400
STICK = "\\Stick"


def mount(*arguments):
    return subprocess.run(["mount", *map(str, arguments)], capture_output=True).returncode == 0


class MediumTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.medium = self.folder / "medium"
        self.place = self.folder / "media" / "Stick"
        for folder in (self.medium, self.place):
            folder.mkdir(parents=True)
        if not mount("-t", "tmpfs", "-o", "size=200m", "none", self.medium):
            self.skipTest("mounting a file system needs the administrator")
        for folder in (self.medium, self.place):
            self.addCleanup(subprocess.run, ["umount", "-l", folder], capture_output=True)

    def start(self):
        return subprocess.Popen([BIN / "quillbox", "--device", self.device, "--media", self.place.parent, "--script", "-"],
                                stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def files_of_sets(self):
        return sorted((self.medium / "QUILBOX").glob("*.Q?T"))

    def wait_for(self, holds, process):
        for _ in range(6000):
            if holds():
                return
            self.assertIsNone(process.poll(), "the program ended")
            time.sleep(0.005)
        self.fail("timed out")

    def test_a_medium_of_the_user_is_named_like_a_card_and_left_out_of_the_backup(self):
        self.write("a", b"a")
        script = """mount -t tmpfs none /media && mkdir -p "/media/$(id -un)/Stick/photos" && cd "/media/$(id -un)/Stick" &&
            echo p >photos/p && "$1" --device "$2" backup --to Stick --files && "$1" --device "$2" sets Stick && cat QUILBOX/*.QLT"""
        done = subprocess.run(["unshare", "--mount", "sh", "-c", script, "-", BIN / "quillbox", self.device], capture_output=True, check=True)
        self.assertIn(b"Set 1 is complete: 1 file, ", done.stdout)
        self.assertIn(b"1 item ", done.stdout)
        self.assertNotIn("photos".encode("utf-16-le"), done.stdout)

    def test_backup_by_command_whose_medium_is_pulled_out_ends_with_exit_code_4(self):
        self.assertTrue(mount("--bind", self.medium, self.place))
        for number in range(FILES):
            self.write(f"Files/{number}", os.urandom(100_000))
        with subprocess.Popen([BIN / "quillbox", "--device", self.device, "--media", self.place.parent, "backup", "--to", "Stick",
                               "--delete-sources"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as run:
            data = self.medium / "QUILBOX" / "QLBX0001.QDT"
            self.wait_for(lambda: data.exists() and data.stat().st_size > 4_000_000, run)
            run.send_signal(signal.SIGSTOP)  # so that the backup can't end before the medium is pulled out
            subprocess.run(["umount", "-l", self.place], check=True)
            run.send_signal(signal.SIGCONT)
            said, wrong = run.communicate(timeout=120)
        self.assertEqual((run.returncode, said), (4, "Set 1 can't be read any more.\n"))
        self.assertIn("the card was taken out", wrong)
        self.assertIn("items may be missing", self.set_tool("list", self.medium, code=1).text)

    def test_medium_that_is_pulled_out_costs_no_source_and_no_earlier_set(self):
        self.assertTrue(mount("--bind", self.medium, self.place))
        for number in range(FILES):
            self.write(f"Files/{number}", os.urandom(100_000))
        before = self.content()
        with self.start() as first:
            said = first.communicate(full_backup(storage=STICK), timeout=120)[1]
        self.assertEqual((first.returncode, said), (0, ""))
        old = {path: path.read_bytes() for path in self.files_of_sets()}
        self.assertEqual(len(old), 2)

        script = 'answer "Override*" no\n' + options_script(delete=True) + full_backup(storage=STICK)
        with self.start() as second:
            second.stdin.write(script)
            second.stdin.close()
            second.stdin = None
            data = self.medium / "QUILBOX" / "QLBX0002.QDT"
            self.wait_for(lambda: data.exists() and data.stat().st_size > 10_000_000, second)
            subprocess.run(["umount", "-l", self.place], check=True)
            _, said = second.communicate(timeout=120)
        self.assertEqual(second.returncode, 4)
        self.assertIn("aren't in the set, or not whole. The first is", said)
        self.assertIn("the card was taken out", said)
        self.assertEqual({path: path.read_bytes() for path in old}, old)
        left = self.content()
        # After the whole entries come the beginning of an entry, if one was being written, and the mark of an unfinished
        # list. The test cuts both off, and the data of the item that was being stored.
        listed = data.with_suffix(".QLT")
        self.assertTrue(card_reader.READER.List(listed.read_bytes()).lacks)
        while card_reader.READER.List(listed.read_bytes()).lacks:
            os.truncate(listed, listed.stat().st_size - 1)
        os.truncate(data, card_reader.entries(listed)[-1].end)
        stored = {name.replace("\\", "/").encode()[1:]: content for kind, name, content in
                  card_reader.read_set(listed) if kind == 1}
        self.assertLess(len(left), FILES, "no source was deleted before")
        self.assertEqual({**{name: stored.get(name) for name in before if name not in left}, **left}, before)
        self.assertEqual(list((self.store).glob("Stick*")), [])
