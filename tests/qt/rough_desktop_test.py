#!/usr/bin/python3
"""Starts that fail, and a desktop that is missing or disappears during a backup. The program reports the trouble. A
backup is completed, and its set is complete.

    rough_desktop_test.py BIN-FOLDER [CASE]
Exit code 77: a tool is missing.
"""
import os
import shutil
import signal
import subprocess
import sys

from desktop import MAIN, Desktop, output_of, require, require_tools, succeeds, wait_for, xdotool
from steps import Keyboard

FILES = 3000
FAILED, NO_DESKTOP, DESKTOP_LOST = 1, 3, 5  # exit codes


class Case:
    """A device, and the program on it."""

    def __init__(self, desktop, capacity=10 ** 9, files=FILES):
        self.desktop = desktop
        self.device, self.card, self.errors = desktop.base / "device", desktop.base / "card", desktop.base / "errors"
        store = self.device / "object-store"
        store.mkdir(parents=True)
        self.card.mkdir()
        noise = os.urandom(20000 + files)
        for number in range(files):
            (store / f"file-{number}").write_bytes(noise[number:number + 20000])
        self.user = desktop.start_program(self.device, "--card", f"Card={self.card},capacity={capacity}",
                                          stderr=open(self.errors, "w"))
        self.steps = Keyboard(self.user)

    def path_of(self, number, extension=""):
        return self.card / "QUILBOX" / f"QLBX000{number}{extension}"

    def back_up(self):
        self.steps.full_backup("\\Card", "All files")

    def await_data(self, number):
        """Waits for the first bytes of the set."""
        data = self.path_of(number, ".QDT")
        wait_for(f"the data of set {number}", lambda: data.exists() and data.stat().st_size > 0)

    def is_sound(self, number):
        return succeeds(self.desktop.bin / "quillbox-set", "verify", self.path_of(number))

    def require_complete(self, number):
        require(self.is_sound(number), f"set {number} isn't complete")
        listed = output_of(self.desktop.bin / "quillbox-set", "list", self.path_of(number))
        count = listed.count("file-")
        require(count == FILES, f"{count} of {FILES} files are in set {number}")

    def end_session(self):
        """Sends the signal that the end of a session sends. Returns the exit code."""
        self.user.process.send_signal(signal.SIGTERM)
        return self.user.process.wait(300)

    def lose_desktop(self):
        """Ends the X server. Returns the program's output on standard error."""
        self.desktop.server.kill()
        code, errors = self.user.process.wait(300), self.errors.read_text()
        require(code == DESKTOP_LOST, f"without its desktop it ended with {code}: {errors}")
        require("the desktop is gone" in errors, f"it doesn't report the desktop: {errors}")
        return errors


def no_desktop(desktop):
    """Four starts without a usable desktop: no display is named, the named one doesn't exist, the toolkit has no such
    plugin, the program has no window module."""
    bare = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "QT_QPA_PLATFORM")}
    alone = desktop.base / "alone" / "bin"
    alone.mkdir(parents=True)
    shutil.copy(desktop.bin / "quillbox", alone)
    for folder, more, sentence in (
            (desktop.bin, {}, "no window can be opened"),
            (desktop.bin, {"DISPLAY": ":4711"}, "no window can be opened"),
            (desktop.bin, {"DISPLAY": desktop.display, "QT_QPA_PLATFORM": "nothing"}, "no window can be opened"),
            (alone, {"DISPLAY": desktop.display}, "its window can't be loaded")):
        done = subprocess.run([folder / "quillbox", "--device", desktop.base / "none"], env={**bare, **more},
                              capture_output=True, text=True)
        require(done.returncode == NO_DESKTOP and sentence in done.stderr and "--script" in done.stderr,
                f"{more}: {done.returncode}, {done.stderr}")


def lost_with_a_full_card(desktop):
    """The desktop is lost in the middle of a run. The program reports the files that didn't fit on the card."""
    case = Case(desktop, capacity=2_000_000)
    case.back_up()
    case.await_data(1)
    errors = case.lose_desktop()
    require("the disk is full" in errors, f"it reports only: {errors}")


def asked_to_replace(desktop):
    """Starts a second backup, which asks whether to replace set 1. Returns the case, and the bytes of that set's
    list."""
    case = Case(desktop)
    case.back_up()
    wait_for("set 1", lambda: case.is_sound(1))
    old = case.path_of(1, ".QLT").read_bytes()
    case.back_up()
    case.user.window("Info?")
    return case, old


def lost_under_a_question(desktop):
    """Without a desktop, the question counts as answered with No. So the old set stays, and the run makes another
    one."""
    case, old = asked_to_replace(desktop)
    case.lose_desktop()
    require(case.path_of(1, ".QLT").read_bytes() == old, "the old set was overwritten")
    case.require_complete(2)


def ended_amid_a_run(desktop):
    """The run ends at its next item. Its set is sound, and the program reports the items that it lacks."""
    case = Case(desktop)
    case.back_up()
    case.await_data(1)
    code, errors = case.end_session(), case.errors.read_text()
    require(code == 0 and "because the run was stopped" in errors, f"it ended with {code}: {errors}")
    require(case.is_sound(1), "the set isn't sound")


def ended_under_a_question(desktop):
    """When the session ends, the question counts as answered with No. So the old set stays. If the run makes another
    set, that set is sound."""
    case, old = asked_to_replace(desktop)
    case.end_session()
    require(case.path_of(1, ".QLT").read_bytes() == old, "the old set was overwritten")
    require(not case.path_of(2, ".QLT").exists() or case.is_sound(2), "the second set isn't sound")


def full_card(desktop):
    """After the run a message names what didn't fit on the card. The program stays open."""
    case = Case(desktop, capacity=2_000_000, files=500)
    case.back_up()
    texts = [node.name for node in case.user.window("Warning") if node and node.name]
    warnings = [text for text in texts if "aren't in the set, or not whole. The first is" in text]
    require(len(warnings) == 1 and "the disk is full" in warnings[0], f"the warning says {texts}")
    case.user.ends("Warning", lambda: case.user.keys("Return"))
    case.steps.leave()


def minimised(desktop):
    """A second process for the same device brings back the window of the first one, and ends."""
    case = Case(desktop)
    case.user.window(MAIN)
    xdotool("getactivewindow", "windowminimize", "--sync")
    wait_for("the window to go", lambda: desktop.active_window()[0] != MAIN)
    second = subprocess.run([desktop.bin / "quillbox", "--device", case.device], timeout=300)
    require(second.returncode == 0, f"the second start ended with {second.returncode}")
    case.user.window(MAIN)
    case.steps.leave()


def start_errors(desktop):
    """An error before the program starts is shown in a box and on standard error. Without a desktop it is shown only on
    standard error."""
    device, damaged, lost = (desktop.base / name for name in ("device", "damaged", "lost"))
    for folder in (device, damaged, lost):
        (folder / "object-store").mkdir(parents=True)
    (damaged / "device.db").write_bytes(b"?" * 5000)
    (lost / "device.lock").write_text("database\n")
    bare = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "QT_QPA_PLATFORM")}

    def box_of(folder, *options):
        said = desktop.base / "errors"
        user = desktop.start_program(folder, *options, stderr=open(said, "w"))
        shown = [node.name for node in user.window("Quillbox") if node and node.name]
        require(any(text in said.read_text() for text in shown), f"{shown} isn't {said.read_text()!r}")
        return user, " ".join(shown)
    for sentence, *start in (("can't be opened: No such", device, "--card", "Card=/nowhere"), ("is damaged", damaged),
                             ("is no file", device, "/nowhere/QLBX0001.QLT")):
        user, shown = box_of(*start)
        require(sentence in shown, f"the box says {shown}")
        user.until("the box to end the program", lambda: user.keys("Return"), lambda: user.process.poll() is not None)
        require(user.process.returncode == FAILED, f"it ended with {user.process.returncode}")
        for display in ({}, {"DISPLAY": ":4711"}):
            done = subprocess.run([desktop.bin / "quillbox", "--device", *start], env={**bare, **display},
                                  capture_output=True, text=True)
            require(done.returncode == FAILED and sentence in done.stderr and done.stderr.count("\n") == 1,
                    f"{display}: ended with {done.returncode} and {done.stderr!r}")
    # A warning is shown before the window.
    user, shown = box_of(lost)
    require("device.db" in shown and "is missing" in shown, f"the warning says {shown}")
    user.ends("Quillbox", lambda: user.keys("Return"))
    Keyboard(user).leave()


def set_by_argument(desktop):
    """With a set as its argument, the program opens the dialog that selects what to restore. If the program already
    runs, a second process has the first one open this dialog."""
    device, store = desktop.base / "device", desktop.base / "Old"
    store.mkdir()
    script = 'command 40003\nwait "Full Backup"\ncheck 1007\nok\nwait "Select"\nselect 1003 "\\Card"\nok\nidle\n'
    done = subprocess.run([desktop.bin / "quillbox", "--device", device, "--card", f"Card={store}", "--script", "-"],
                          input=script, text=True)
    require(done.returncode == 0, f"the backup ended with {done.returncode}")
    listed = store / "QUILBOX" / "QLBX0001.QLT"
    user = desktop.start_program(device, listed)
    user.find("Restore selection", "Registry")
    user.escape("Restore selection")
    user.window(MAIN)
    second = subprocess.run([desktop.bin / "quillbox", "--device", device, listed], timeout=300)
    require(second.returncode == 0, f"the second start ended with {second.returncode}")
    user.escape("Restore selection")
    Keyboard(user).leave()


CASES = [start_errors, set_by_argument, no_desktop, lost_with_a_full_card, lost_under_a_question, ended_amid_a_run,
         ended_under_a_question, full_card, minimised]


def main(bin_folder, name=None):
    require_tools()
    if name:
        next(case for case in CASES if case.__name__ == name)(Desktop(bin_folder))
        print(f"{name}: passed")
        return 0
    # Each case needs a desktop of its own, because some cases end their desktop.
    started = [subprocess.Popen([sys.executable, __file__, bin_folder, case.__name__]) for case in CASES]
    return max(process.wait() for process in started)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
