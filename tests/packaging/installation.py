"""An installation of the build in a temporary folder."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["QUILLBOX_BUILD"])


class InstallationTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="quillbox-test-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.prefix = cls.folder / "prefix"
        cls.run_tool("cmake", "--install", BUILD, "--prefix", cls.prefix, "--strip")
        configured = next(line.split("=", 1)[1] for line in (BUILD / "CMakeCache.txt").read_text().splitlines()
                          if line.startswith("CMAKE_INSTALL_PREFIX:"))
        for path in cls.prefix.rglob("*"):  # files that contain paths have the configured prefix in them
            if path.is_file() and not path.is_symlink() and f"{configured}/".encode() in (content := path.read_bytes()):
                if b"\0" not in content:
                    path.write_bytes(content.replace(f"{configured}/".encode(), f"{cls.prefix}/".encode()))

    @staticmethod
    def run_tool(*words, code=0, **start):
        done = subprocess.run([*map(str, words)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=120,
                              check=False, **start)
        if done.returncode != code:
            raise AssertionError(f"{words} returned {done.returncode}: {done.stdout}")
        return done.stdout


def main():
    # The suite's command names the folder `packaging`, so that the suite runs again after a change there. unittest must
    # not see this argument.
    unittest.main(argv=sys.argv[:1])
