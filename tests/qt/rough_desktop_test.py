#!/usr/bin/python3
"""A desktop that isn't there, goes away in the middle of a backup, or is full of impatience: it is said in a sentence,
what is being done comes to its end, and its set is whole.

    rough_desktop_test.py BIN-FOLDER
Exit code 77: a tool is missing.
"""
import os
import pathlib
import shutil
import subprocess
import sys

from desk import MAIN, Desk, Person, require_tools, wait_for, xdotool
from hands import Keyboard

FILES = 3000
NO_DESKTOP, DESKTOP_LOST = 3, 5  # exit codes


def require(condition, fault):
    if not condition:
        raise SystemExit(fault)


class Case:
    """A device of its own on a desktop, and the program on it."""

    def __init__(self, desk, bin_folder, name):
        self.desk, self.bin = desk, bin_folder
        self.device = desk.base / name
        self.said = desk.base / f"{name}-said"
        store = self.device / "object-store"
        store.mkdir(parents=True)
        self.card = self.device / "cards" / "Card"
        self.card.mkdir(parents=True)
        for number in range(FILES):
            (store / f"file-{number}").write_bytes(os.urandom(20000))

    def start(self, *options):
        self.process = self.desk.start(f"{self.bin}/quillbox", "--device", str(self.device), *options,
                                       stderr=open(self.said, "w"))
        self.person = Person(self.process)
        self.hands = Keyboard(self.person)

    def set(self, number):
        return self.card / "QUILBOX" / f"QLBX000{number}"

    def begin_backup(self):
        self.hands.menu("Full Backup", "Operations", "Backup", "Full...")
        self.hands.tick("Full Backup", "All files")
        self.hands.press("Full Backup", "OK")
        self.hands.row("Select", "\\Card")
        self.hands.press("Select", "OK")

    def await_data(self, number):
        data = self.set(number).with_suffix(".QDT")
        wait_for("the run", lambda: data.exists() and data.stat().st_size > 0)

    def require_whole(self, number):
        tool = f"{self.bin}/quillbox-set"
        require(subprocess.run([tool, "verify", self.set(number)]).returncode == 0, f"set {number} isn't whole")
        listed = subprocess.run([tool, "list", self.set(number)], capture_output=True, text=True).stdout
        require(listed.count("file-") == FILES, f"{listed.count('file-')} of {FILES} files are in set {number}")

    def lose_desktop(self):
        self.desk.server.kill()
        code = self.process.wait(300)
        said = self.said.read_text()
        require(code == DESKTOP_LOST, f"with its desktop gone it ended with {code}: {said}")
        require("the desktop is gone" in said, f"it didn't say that the desktop is gone: {said}")


def no_desktop(desk, bin_folder):
    """None named, one that isn't there, a toolkit without its plugin, a program without its window."""
    bare = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "QT_QPA_PLATFORM")}
    alone = desk.base / "alone" / "bin"
    alone.mkdir(parents=True)
    shutil.copy(f"{bin_folder}/quillbox", alone)
    for program, more, sentence in (
            (bin_folder, {}, "no window can be opened"), (bin_folder, {"DISPLAY": ":4711"}, "no window can be opened"),
            (bin_folder, {"DISPLAY": desk.display, "QT_QPA_PLATFORM": "nothing"}, "no window can be opened"),
            (alone, {"DISPLAY": desk.display}, "its window can't be loaded")):
        done = subprocess.run([f"{program}/quillbox", "--device", desk.base / "none"], env={**bare, **more},
                              capture_output=True, text=True)
        require(done.returncode == NO_DESKTOP and sentence in done.stderr and "--script" in done.stderr,
                f"{more}: {done.returncode}, {done.stderr}")


def lost_in_a_run(case):
    case.start()
    case.begin_backup()
    case.await_data(1)
    case.lose_desktop()
    case.require_whole(1)


def lost_with_a_full_card(case):
    """What found no room is told all the same."""
    case.card = case.card.rename(case.desk.base / "small")
    case.start("--card", f"Card={case.card},capacity=2000000")
    case.begin_backup()
    case.await_data(1)
    case.lose_desktop()
    require("the disk is full" in case.said.read_text(), f"it said only: {case.said.read_text()}")


def full_card(case):
    """The window says at the end of the run what found no room, and goes on."""
    case.card = case.card.rename(case.desk.base / "stick")
    case.start("--card", f"Card={case.card},capacity=2000000")
    case.begin_backup()
    warning = case.person.window("Warning")
    said = [node.name for node in warning if node and "aren't in the set, or not whole. The first is" in node.name]
    require(len(said) == 1 and "the disk is full" in said[0], f"the warning says {[node.name for node in warning]}")
    case.person.ends("Warning", lambda: case.person.keys("Return"))
    case.hands.leave()
    require(case.process.wait(300) == 0, "it ended badly")


def lost_under_a_question(case):
    """The question is refused, so the old set stays and the run goes on to its end."""
    case.start()
    case.begin_backup()
    wait_for("set 1", lambda: subprocess.run([f"{case.bin}/quillbox-set", "verify", case.set(1)],
                                             capture_output=True).returncode == 0)
    old = case.set(1).with_suffix(".QLT").read_bytes()
    case.begin_backup()
    case.person.window("Info?")
    case.lose_desktop()
    require(case.set(1).with_suffix(".QLT").read_bytes() == old, "the old set was written over")
    case.require_whole(2)


def minimised(case):
    """A second start brings the window back, and ends."""
    case.start()
    case.person.window(MAIN)
    xdotool("windowminimize", "--sync", xdotool("getactivewindow"))
    wait_for("the window to go", lambda: xdotool("getactivewindow") == "" or
             xdotool("getwindowname", xdotool("getactivewindow")) != MAIN)
    second = subprocess.run([f"{case.bin}/quillbox", "--device", str(case.device)], timeout=300)
    require(second.returncode == 0, f"the second start ended with {second.returncode}")
    case.person.window(MAIN)
    case.hands.leave()
    require(case.process.wait(300) == 0, "the first one ended badly")


def impatient(case):
    """What is clicked while a run works is dropped; the wish to close is kept until it is done."""
    case.start()
    case.person.window(MAIN)
    again = case.person.place(case.person.find(MAIN, "Full backup", "push button"))
    case.begin_backup()
    case.await_data(1)
    case.person.click_at(again.x + 8, again.y + 8)
    case.person.window(MAIN)
    case.person.keys("alt+F4")
    code = case.process.wait(300)
    require(code == 0, f"it ended with {code}")
    case.require_whole(1)
    require(not case.set(2).with_suffix(".QLT").exists(), "a second run began")


CASES = {"run": lost_in_a_run, "full": lost_with_a_full_card, "warned": full_card,
         "question": lost_under_a_question,
         "minimised": minimised, "impatient": impatient}


def main(bin_folder, *names):
    require_tools()
    if not names:
        # Each on a desktop of its own, since some of them end it.
        started = [subprocess.Popen([sys.executable, __file__, bin_folder, name]) for name in ["none", *CASES]]
        return max(process.wait() for process in started)
    desk = Desk()
    if names[0] == "none":
        no_desktop(desk, bin_folder)
    else:
        CASES[names[0]](Case(desk, bin_folder, names[0]))
    print(f"{names[0]}: as it should be")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
