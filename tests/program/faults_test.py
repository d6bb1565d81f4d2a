"""The test causes each fault of the table in docs/commands.md, and expects the exit code and the sentence of the
table."""
import fnmatch
import os
import pathlib
import re
import subprocess

import independent_set
from companions import BIN
from program import ProgramTest

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/commands.md"


def rows():
    """Returns fault, commands, exit code and sentence of each row. In a sentence * means any text."""
    table = PAGE.read_text().split("## What can go wrong\n")[1].split("\n## ")[0]
    return re.findall(r"^\| (.+?) \| (.+?) \| (\d) \| (.+?) \|$", table, re.M)


class FaultsTest(ProgramTest):
    def setUp(self):
        super().setUp()
        for name in ("a", "docs/b"):
            self.write(name, os.urandom(5000))
        self.user = {}

    def backup(self, *words, to="Card"):
        return ["backup", "--to", to, "--files", *words]

    def made_set(self):
        self.run_program("quillbox", "--device", self.device, *self.backup())
        return self.set

    def profile(self):
        (self.folder / "quillbox").mkdir()
        (self.folder / "quillbox/nightly.toml").write_text('[backup]\nto = "Card"\ncolour = "red"\n')
        self.user = {"env": {**os.environ, "XDG_CONFIG_HOME": str(self.folder)}}
        return ["--profile", "nightly", "backup"]

    def used(self, device, *more):
        """Starts a process that keeps a device open until the end of the test."""
        (device / "object-store").mkdir(parents=True, exist_ok=True)
        process = subprocess.Popen([BIN / "quillbox", "--device", device, *more, "--script", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        process.stdin.write(b'command 40011\nwait "Options"\nprint text\nwait "never"\n')
        process.stdin.close()
        process.stdout.readline()
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)

    def read_only(self):
        """Makes a folder that another user owns, and has the program run without the rights of an administrator."""
        target = self.folder / "others"
        target.mkdir(mode=0o755)
        if os.geteuid() == 0:
            for path in (self.folder, *self.folder.rglob("*")):
                os.chown(path, 65534, 65534)
            os.chown(target, 0, 0)
            self.user = {"user": 65534, "group": 65534, "extra_groups": []}
        else:
            target.chmod(0o555)
        return self.backup(to=f"{target}/")

    def taken(self):
        for number in range(1, 100):
            independent_set.Set().write(self.sets, number)
        return self.backup()

    def opened(self):
        self.enterContext(open(self.store / "a", "ab"))
        return self.backup()

    def damaged(self):
        os.truncate(self.made_set().with_suffix(".QDT"), 6000)
        self.empty_store()
        return ["restore", self.set]

    def other_card(self):
        self.used(self.folder / "other", "--card", f"C={self.card}")
        return self.backup()

    def own_device(self):
        self.used(self.device)
        return self.backup()

    def everything(self):
        """Returns all files but those with the state of an existing device."""
        return {name: content for name, content in self.content(self.folder).items()
                if not name.startswith((b"device/device.", b"other/device."))}

    def faults(self):
        """Returns for each fault a function that causes it and returns the words of the command."""
        return {
            "An option is missing": lambda: ["backup"],
            "A number is out of range": lambda: self.backup("--replace", "100"),
            "A profile has an unknown key": self.profile,
            "There is no such profile": lambda: ["--profile", "none", "sets"],
            "A file exists, and nobody can be asked": lambda: self.made_set() and self.write("a", b"new") and ["restore", self.set],
            "The device doesn't exist": lambda: ["--device", self.folder / "typo", *self.backup()],
            "The device is in use": self.own_device,
            "The card is in use by another device": self.other_card,
            "There is no such card": lambda: self.backup(to="Stick"),
            "The folder for the set doesn't exist": lambda: self.backup(to="/nowhere/x"),
            "The folder for the set is read-only or someone else's": self.read_only,
            "Every number is taken": self.taken,
            "There is no set with the number to replace": lambda: self.backup("--replace", "7"),
            "There is nothing of the kind": lambda: ["backup", "--to", "Card", "--databases"],
            "An item doesn't exist (there are no wildcards)": lambda: self.write("doc\nx") and self.backup("--item", "/do*\nx"),
            "SET is a folder": lambda: ["restore", self.made_set().parent],
            "SET doesn't exist": lambda: ["restore", self.sets / "QLBX0009"],
            "There isn't enough room": lambda: ["--card", f"Small={self.folder}/small,capacity=6000", *self.backup(to="Small")],
            "A file is in use": self.opened,
            "The set is damaged": self.damaged,
        }

    def test_each_fault_has_its_exit_code_and_sentence(self):
        faults = self.faults()
        self.assertEqual([fault for fault, *_ in rows()], list(faults))
        for fault, commands, code, sentence in rows():
            with self.subTest(fault):
                self.doCleanups()
                self.setUp()
                (self.folder / "small").mkdir()
                words = self.faults()[fault]()
                self.assertTrue(commands == "any" or any(f"`{word}`" in commands for word in words), words)
                before = self.everything()
                device = [] if "--device" in words or "--profile" in words else ["--device", self.device]
                done = self.run_program("quillbox", *device, *words, code=int(code), **self.user)
                lines = done.said.splitlines()
                self.assertTrue(any(fnmatch.fnmatchcase(line, f"*{sentence.strip('`')}*") for line in lines), done.said)
                self.assertLessEqual(before.items(), self.everything().items(), "something is lost")
                if code in "12":
                    self.assertIn(done.text, ("", "No set was made.\n"))
                    self.assertEqual(self.everything(), before)
