"""Starts Quillbox on a device in a temporary folder, as a user's script does."""
import os
import shutil
import time

from card_reader import read_set
from companions import CompanionTest

SET = "\\Card\\QUILBOX\\QLBX0001.QLT"
# Check boxes of "Full Backup".
FILES, DATABASES, REGISTRY = 1005, 1006, 1007
CONFIRM_REGISTRY = 'wait "Restore"\nok\n'


def full_backup(*boxes, storage="\\Card", comment=""):
    """Returns the lines of a full backup. Without `boxes` it backs up all files."""
    checks = "".join(f"check {box}\n" for box in boxes or [FILES])
    return f"""command 40003
wait "Full Backup"
{checks}type 1004 "{comment}"
ok
wait "Select"
select 1003 "{storage}"
ok
idle
"""


def full_restore(then="", set=SET):
    """Returns the lines of a full restore. `then` answers its questions: CONFIRM_REGISTRY if the set has a registry."""
    return f"""command 40006
wait "Select"
select 1003 "{set}"
ok
wait "Full Restore"
ok
{then}idle
"""


def options_script(policy=None, log=None, delete=None):
    """Returns the lines that set options. `policy` is the id of a restore option's control: 1023 to replace files, 1024
    to skip them, 1025 to ask."""
    lines = ["command 40011", 'wait "Options"']
    if policy:
        lines.append(f"check {policy}")
    for box, wanted in ((1026, log), (1022, delete)):
        if wanted is not None:
            lines.append(f"{'check' if wanted else 'uncheck'} {box}")
    return "\n".join(lines + ["ok", ""])


def shown(transcript, *kinds):
    """Returns the transcript's lines of these kinds, which show what the user saw."""
    return [line for line in transcript if line.split(" ", 1)[0] in kinds]


class ProgramTest(CompanionTest):
    """A device with an empty object store and one card named Card."""

    def setUp(self):
        super().setUp()
        self.store = self.device / "object-store"
        self.card = self.device / "cards" / "Card"
        self.sets = self.card / "QUILBOX"
        self.set = self.sets / "QLBX0001.QLT"
        self.store.mkdir(parents=True)
        self.card.mkdir(parents=True)

    def quillbox(self, script, *arguments, device=None, **more):
        """Runs a script. Returns the finished process, which also has the lines of the transcript: .transcript."""
        transcript = self.folder / "transcript"
        done = self.run_program("quillbox", "--device", device or self.device, "--script", "-", "--transcript", transcript,
                                "--timeout", "20", *arguments, given=script, env={**os.environ, "LC_ALL": "C.UTF-8"}, **more)
        done.transcript = transcript.read_text().splitlines() if transcript.exists() else []
        return done

    def write(self, name, content=b""):
        path = self.store / os.fsdecode(name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        # A backup doesn't delete a file that was written a moment ago.
        os.utime(path, (time.time() - 10,) * 2)
        return path

    def content(self, folder=None):
        """Returns the content of every file below the object store. The key is the name as bytes."""
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

    def log(self):
        """Returns the lines of the first set's log. Each line ends with a blank."""
        lines = (self.sets / "BACKUP0001.LOG").read_bytes().decode().split("\r\n")
        self.assertEqual(lines.pop(), "")
        return lines

    def items(self, number=1):
        """Returns the bytes of a set's items by kind and name. Each item must occur once. The registry's name has no
        meaning and becomes ""."""
        items = read_set(self.sets / f"QLBX{number:04d}.QLT")
        found = {(kind, name if kind in (1, 2) else ""): content for kind, name, content in items}
        self.assertEqual(len(found), len(items), [name for _, name, _ in items])
        return found
