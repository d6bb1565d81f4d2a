"""A power cut right behind exit code 0: what a run reported as done is on the disk, whole."""
import os
import pathlib
import shutil
import subprocess
import unittest

from program import FULL_BACKUP, FULL_RESTORE, ProgramTest, options_script

FILE_SYSTEMS = {"ext4": (["mkfs.ext4", "-q", "-F"], 64), "xfs": (["mkfs.xfs", "-q", "-f"], 320)}
FILES = 300


class PowerCutTest(ProgramTest):
    """A disk is an image in a file. What the file holds at one moment is what the kernel has sent to the disk by then:
    a copy of it, mounted, is the disk after a power cut."""

    def setUp(self):
        super().setUp()
        self.mounted = []
        self.addCleanup(lambda: [subprocess.run(["umount", place], check=True) for place in reversed(self.mounted)])

    def mount(self, image, place):
        place.mkdir()
        if subprocess.run(["mount", "-o", "loop", image, place], capture_output=True).returncode:
            self.skipTest("mounting a file system needs the administrator and loop devices")
        self.mounted.append(place)
        return place

    def disk(self, kind):
        """A new file system, mounted; and what a power cut makes of it, by a call."""
        make, megabytes = FILE_SYSTEMS[kind]
        if not shutil.which(make[0]):
            self.skipTest(make[0] + " is missing")
        image = self.base / f"{kind}.disk"
        with open(image, "wb") as file:
            file.truncate(megabytes << 20)
        subprocess.run([*make, image], check=True, capture_output=True)
        place = self.mount(image, self.base / kind)
        subprocess.run(["sync"], check=True)  # the file system itself is there before the test begins

        def cut():
            after = self.base / f"{kind}.after"
            subprocess.run(["cp", "--sparse=always", image, after], check=True)
            if kind == "xfs":  # mounted a second time beside itself
                return self.mount_copy(after, ["-o", "loop,nouuid"], self.base / f"{kind} after")
            return self.mount_copy(after, ["-o", "loop"], self.base / f"{kind} after")

        return place, cut

    def mount_copy(self, image, options, place):
        place.mkdir()
        subprocess.run(["mount", *options, image, place], check=True)
        self.mounted.append(place)
        return place

    def fill(self):
        for number in range(FILES):
            self.write(f"{number // 50}/{number}", os.urandom(number * 7 % 5000))
        return self.content()

    def test_set_is_whole_after_exit_code_0(self):
        for kind in FILE_SYSTEMS:
            for delete in (False, True):
                with self.subTest(kind=kind, delete=delete):
                    before = self.fill()
                    place, cut = self.disk(kind)
                    self.quillbox(options_script(delete=delete, log=True) + FULL_BACKUP.format(comment="", storage="\\Stick"),
                                  "--card", f"Stick={place}")
                    after = cut()
                    sets = after / "QUILBOX"
                    self.assertIn(f"Sound: {FILES} items", self.set_tool("verify", sets / "QLBX0001"))
                    self.assertEqual((sets / "BACKUP0001.LOG").read_bytes(), (place / "QUILBOX" / "BACKUP0001.LOG").read_bytes())
                    self.set_tool("extract", sets / "QLBX0001", self.base / "out")
                    self.assertTrue(self.content(self.base / "out") == before)
                    self.assertEqual(self.content(), {} if delete else before)
                    shutil.rmtree(self.base / "out")
                    self.forget_disks(kind)

    def test_restored_files_are_whole_after_exit_code_0(self):
        before = self.fill()
        self.quillbox(FULL_BACKUP.format(comment="", storage="\\Card"))
        self.empty_store()
        for kind in FILE_SYSTEMS:
            with self.subTest(kind=kind):
                place, cut = self.disk(kind)
                device = place / "device"
                (device / "object-store").mkdir(parents=True)
                self.quillbox(FULL_RESTORE.format(set="\\Stick\\QUILBOX\\QLBX0001.QLT"), "--card", f"Stick={self.card}",
                              device=device)
                self.assertTrue(self.content(cut() / "device" / "object-store") == before)
                self.forget_disks(kind)

    def forget_disks(self, kind):
        while self.mounted:
            place = self.mounted.pop()
            subprocess.run(["umount", place], check=True)
            place.rmdir()
        for image in self.base.glob(f"{kind}.*"):
            image.unlink()


if __name__ == "__main__":
    unittest.main()
