"""SIGTERM at any moment of a backup or a restore: the run ends soon, and nothing is lost."""
import os
import random
import re
import signal
import subprocess
import time

from commands_test import CommandTest
from companions import BIN, SANITIZED


class StopTest(CommandTest):
    ROUNDS = int(os.environ.get("QUILLBOX_STOP_ROUNDS", 5 if SANITIZED else 15))

    def stopped(self, *words, after):
        with subprocess.Popen([BIN / "quillbox", "--device", self.device, *map(str, words)], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE) as run:
            time.sleep(after)
            asked = time.monotonic()
            run.send_signal(signal.SIGTERM)
            text = run.communicate(timeout=60)[0].decode()
            self.assertLess(time.monotonic() - asked, 20 if SANITIZED else 5, "two seconds on a machine that isn't busy")
        self.assertIn(run.returncode, (0, 6, -signal.SIGTERM))
        if run.returncode == 6:
            self.assertTrue(text.startswith("Stopped"), text)
        return run.returncode

    def seconds_for(self, *words):
        began = time.monotonic()
        self.command(*words)
        return time.monotonic() - began

    def assert_no_temporary_file(self):
        left = [name for name in self.content(self.device) if re.search(rb"BKTMP|BK000|BKREG|TMVReg|\.CDB$|being deleted", name)]
        self.assertEqual(left, [])

    def test_sigterm_at_any_moment_loses_nothing(self):
        files = {f"f{number:04d}".encode(): os.urandom(300) + str(number).encode() * 50 for number in range(1000)}
        chance = random.Random(1)
        back_up, restore = ("backup", "--to", "Card", "--delete-sources"), ("restore", self.set, "--existing", "replace")
        for name, content in files.items():
            self.write(name, content)
        longest = self.seconds_for(*back_up), self.seconds_for(*restore)
        codes = set()
        # On a machine that has just become faster, most moments come after the end of the run.
        for done in range(4 * self.ROUNDS):
            if done >= self.ROUNDS and 6 in codes:
                break
            self.empty_store()
            for path in self.sets.glob("*"):
                path.unlink()
            for name, content in files.items():
                self.write(name, content)
            codes.add(code := self.stopped(*back_up, after=chance.uniform(0.005, longest[0])))
            self.assertTrue(code != 0 or self.set.with_suffix(".SUM").exists())
            self.assert_no_temporary_file()
            stored = {}
            if self.set.exists():
                self.assertEqual(self.verified(self.set)["sound"], True)
                stored = {name[1:].encode(): content for (kind, name), content in self.items().items() if kind == 1}
            self.assertEqual({**stored, **self.content()}, files)
            codes.add(self.stopped(*restore, after=chance.uniform(0.005, longest[1])) if stored else 0)
            self.assert_no_temporary_file()
            self.assertEqual({**stored, **self.content()}, files, "what is restored is whole")
        self.assertIn(6, codes, "no run was stopped in between")
