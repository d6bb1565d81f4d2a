"""Starts Quillbox on a device in a temporary folder, as a user's script does."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import time
import unittest

BIN = pathlib.Path(os.environ["QUILLBOX_BIN"])

FULL_BACKUP = """command 40003
wait "Full Backup"
check 1005
type 1004 "{comment}"
ok
wait "Select"
select 1003 "{storage}"
ok
idle
"""

FULL_RESTORE = """command 40006
wait "Select"
select 1003 "{set}"
ok
wait "Full Restore"
ok
idle
"""

# Restore options of dialog 111.
REPLACE, SKIP, ASK = 1023, 1024, 1025


def options_script(policy=None, log=None, delete=None):
    lines = ["command 40011", 'wait "Options"']
    if policy:
        lines.append(f"check {policy}")
    for box, wanted in ((1026, log), (1022, delete)):
        if wanted is not None:
            lines.append(f"{'check' if wanted else 'uncheck'} {box}")
    return "\n".join(lines + ["ok", ""])


class ProgramTest(unittest.TestCase):
    """A device with an empty object store and one card named Card."""

    def setUp(self):
        base = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
        self.base = pathlib.Path(tempfile.mkdtemp(prefix="quillbox-test-", dir=base))
        self.addCleanup(shutil.rmtree, self.base, ignore_errors=True)
        self.device = self.base / "device"
        self.store = self.device / "object-store"
        self.card = self.device / "cards" / "Card"
        self.store.mkdir(parents=True)
        self.card.mkdir(parents=True)

    def quillbox(self, script, *arguments, device=None, code=0, **start):
        """Runs a script; the finished process, its transcript's lines in .transcript. `start` goes to subprocess."""
        transcript = self.base / "transcript"
        finished = subprocess.run(
            [BIN / "quillbox", "--device", device or self.device, "--script", "-", "--transcript", transcript,
             "--timeout", "20", *arguments],
            input=script, capture_output=True, text=True, timeout=600, env={**os.environ, "LC_ALL": "C.UTF-8"}, **start)
        self.assertEqual(finished.returncode, code, finished.stderr + finished.stdout)
        finished.transcript = transcript.read_text().splitlines() if transcript.exists() else []
        return finished

    def set_tool(self, *arguments, code=0):
        finished = subprocess.run([BIN / "quillbox-set", *arguments], capture_output=True, timeout=600)
        self.assertEqual(finished.returncode, code, finished.stderr + finished.stdout)
        return finished.stdout.decode()

    def write(self, name, content=b""):
        path = self.store / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        # A file that was written a moment ago isn't deleted after its backup.
        os.utime(path, (time.time() - 10,) * 2)
        return path

    def content(self, folder=None):
        """Every file below the object store, by its name as bytes."""
        folder = os.fsencode(folder or self.store)
        found = {}
        for place, _, names in os.walk(folder):
            for name in names:
                path = os.path.join(place, name)
                with open(path, "rb") as file:
                    found[os.path.relpath(path, folder)] = file.read()
        return found

    def empty_store(self):
        shutil.rmtree(self.store)
        self.store.mkdir()


def shown(transcript, *kinds):
    """The transcript's lines of these kinds: what the user saw."""
    return [line for line in transcript if line.split(" ", 1)[0] in kinds]
