"""A power cut after exit code 0: everything that a run reported as done is completely on the disk."""
import contextlib
import os
import shutil
import subprocess

from program import ProgramTest, full_backup, full_restore, options_script

# For each file system: the command that makes it, its size in MiB, and the mount options of a copy beside the original.
FILE_SYSTEMS = {"ext4": (["mkfs.ext4", "-q", "-F"], 64, "loop"), "xfs": (["mkfs.xfs", "-q", "-f"], 320, "loop,nouuid")}
FILE_COUNT = 300


class PowerCutTest(ProgramTest):
    """A disk is an image in a file. At any moment the file contains exactly the data that the kernel has sent to the
    disk. So a mounted copy of the file shows the disk after a power cut at that moment."""

    @contextlib.contextmanager
    def mounted(self, image, options):
        place = image.with_name(image.name + " mounted")
        place.mkdir()
        if subprocess.run(["mount", "-o", options, image, place], capture_output=True, check=False).returncode:
            self.skipTest("mounting a file system needs the administrator and loop devices")
        try:
            yield place
        finally:
            subprocess.run(["umount", place], check=True)
            place.rmdir()
            image.unlink()

    @contextlib.contextmanager
    def disk(self, kind):
        """Yields a new mounted file system, and a function that mounts the state after a power cut at the time of its
        call."""
        make, megabytes, options_of_copy = FILE_SYSTEMS[kind]
        if not shutil.which(make[0]):
            self.skipTest(make[0] + " is missing")
        image = self.folder / f"{kind}.disk"
        with open(image, "wb") as file:
            file.truncate(megabytes << 20)
        subprocess.run([*make, image], check=True, capture_output=True)
        with contextlib.ExitStack() as mounts:
            place = mounts.enter_context(self.mounted(image, "loop"))
            subprocess.run(["sync"], check=True)  # the new file system itself must be on the disk before the test begins

            def cut():
                after = self.folder / f"{kind}.after"
                subprocess.run(["cp", "--sparse=always", image, after], check=True)
                return mounts.enter_context(self.mounted(after, options_of_copy))

            yield place, cut

    def fill(self):
        for number in range(FILE_COUNT):
            self.write(f"{number // 50}/{number}", os.urandom(number * 7 % 5000))
        return self.content()

    def test_set_is_whole_after_exit_code_0(self):
        for kind in FILE_SYSTEMS:
            for delete in (False, True):
                before = self.fill()
                with self.subTest(kind=kind, delete=delete), self.disk(kind) as (place, cut):
                    self.quillbox(options_script(delete=delete, log=True) + full_backup(storage="\\Stick"),
                                  "--card", f"Stick={place}")
                    sets = cut() / "QUILBOX"
                    self.assertIn(f"Sound: {FILE_COUNT} items", self.set_tool("verify", sets / "QLBX0001").text)
                    log = place / "QUILBOX" / "BACKUP0001.LOG"
                    self.assertEqual((sets / log.name).read_bytes(), log.read_bytes())
                    out = self.output_folder()
                    self.set_tool("extract", sets / "QLBX0001", out)
                    self.assertTrue(self.content(out) == before)
                    self.assertEqual(self.content(), {} if delete else before)

    def test_restored_files_are_whole_after_exit_code_0(self):
        before = self.fill()
        self.quillbox(full_backup())
        self.empty_store()
        for kind in FILE_SYSTEMS:
            with self.subTest(kind=kind), self.disk(kind) as (place, cut):
                device = place / "device"
                (device / "object-store").mkdir(parents=True)
                self.quillbox(full_restore(set="\\Stick\\QUILBOX\\QLBX0001.QLT"), "--card", f"Stick={self.card}", device=device)
                self.assertTrue(self.content(cut() / "device" / "object-store") == before)
