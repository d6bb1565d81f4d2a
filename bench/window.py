#!/usr/bin/python3
"""Measures the window: the time of a backup of 20,000 small files compared with the same backup by script, how fast the
window answers during the backup, and how soon it appears.

    bench/window.py                      medians of five rounds
    bench/window.py --rounds 3 --folder /dev/shm/bench --bin build/bin

Script and window run in each round, in an order that changes from round to round. The time of a backup is that from the
creation of its data file to the last write to its list, as the file system stores these times. So it includes neither
the dialogs nor the start of the program. An answer is the round trip of a request from a screen reader. The thread that
draws the window answers it.
"""
import argparse
import pathlib
import shutil
import statistics
import subprocess
import sys
import time

import compare

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/qt"))
from desktop import MAIN, Desktop, User, require_tools, xdotool  # noqa: E402
from steps import Keyboard  # noqa: E402

RATIO_AIM = 1.15
ANSWER_AIM_SECONDS = 0.1
START_AIM_SECONDS = 2.0
STEP = 7  # number of pixels of one move of the window


def seconds_of(stamp):
    clock, fraction = stamp.split()[1].split(".")
    hours, minutes, seconds = map(int, clock.split(":"))
    return hours * 3600 + minutes * 60 + seconds + float("0." + fraction)


class Bench:
    def __init__(self, arguments):
        self.bin = arguments.bin
        self.device = arguments.folder / "window" / "device"
        self.sets = self.device / "cards" / "Card" / "QUILBOX"
        shutil.rmtree(self.device.parent, ignore_errors=True)
        (self.device / "object-store").mkdir(parents=True)
        compare.make_small(self.device / "object-store")

    def clear(self):
        shutil.rmtree(self.device / "cards", ignore_errors=True)
        self.sets.parent.mkdir(parents=True)

    def duration(self):
        born, = subprocess.run(["stat", "-c", "%w", self.sets / "QLBX0001.QDT"], capture_output=True,
                               text=True).stdout.splitlines()
        written, = subprocess.run(["stat", "-c", "%y", self.sets / "QLBX0001.QLT"], capture_output=True,
                                  text=True).stdout.splitlines()
        if born == "-":
            sys.exit("bench: this file system doesn't keep when a file was made")
        return (seconds_of(written) - seconds_of(born)) % 86400

    def by_script(self):
        self.clear()
        subprocess.run([f"{self.bin}/quillbox", "--device", self.device, "--script", "-"], text=True, check=True,
                       input=compare.BACKUP_SCRIPT)
        return self.duration()

    def start_window(self, desktop):
        begun = time.perf_counter()
        process = desktop.start(f"{self.bin}/quillbox", "--device", str(self.device))
        while not xdotool("search", "--onlyvisible", "--name", f"^{MAIN}$"):
            pass
        return process, time.perf_counter() - begun

    def in_window(self, desktop, meanwhile=lambda user, main: time.sleep(0.01)):
        """Makes a backup in the window. Returns its seconds, and the seconds until the window appeared."""
        self.clear()
        process, start = self.start_window(desktop)
        user = User(desktop, process, 1)
        keyboard = Keyboard(user)
        user.window(MAIN)
        main = xdotool("getactivewindow")
        keyboard.menu("Full Backup", "Operations", "Backup", "Full...")
        keyboard.tick("Full Backup", "All files")
        keyboard.press("Full Backup", "OK")
        keyboard.row("Select", "\\Card")
        user.tab_to("Select", "OK")
        xdotool("key", "Return")
        data = self.sets / "QLBX0001.QDT"
        while not data.exists():
            time.sleep(0.002)  # a busy loop would take processor time from the backup
        # The program remembers the request to close, and ends after the run.
        user.window(MAIN)
        xdotool("key", "alt+F4")
        while process.poll() is None:
            meanwhile(user, main)
        return self.duration(), start


class Questions:
    """Asks repeatedly for the position of the window while the window is moved."""

    def __init__(self):
        self.answers = []
        self.moved = 0

    def ask(self, user, main):
        if len(self.answers) % 20 == 0:
            self.moved += 1
            xdotool("windowmove", main, 100 + STEP * (self.moved % 20), 100)
        try:
            begun = time.perf_counter()
            user.application[0].queryComponent().getExtents(0)
            self.answers.append(time.perf_counter() - begun)
        except Exception:  # the window has closed
            time.sleep(0.001)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--folder", type=pathlib.Path, default=pathlib.Path("/dev/shm/quillbox-bench"))
    parser.add_argument("--bin", type=pathlib.Path, default=ROOT / "build/bin")
    arguments = parser.parse_args()
    require_tools()
    desktop = Desktop(arguments.bin)
    bench = Bench(arguments)
    script, window, starts = [], [], []
    for number in range(arguments.rounds):
        sides = [lambda: script.append(bench.by_script()), lambda: window.append(bench.in_window(desktop))]
        for side in sides[number % 2:] + sides[:number % 2]:
            side()
    starts = [start for _, start in window]
    ratio = statistics.median(run for run, _ in window) / statistics.median(script)
    questions = Questions()
    bench.in_window(desktop, questions.ask)
    longest = max(questions.answers)
    print(f"backup of 20,000 files: script {statistics.median(script):.3f} s, "
          f"window {statistics.median(run for run, _ in window):.3f} s, ratio {ratio:.2f} (aim {RATIO_AIM})")
    print(f"answers during it: {len(questions.answers)}, median {statistics.median(questions.answers) * 1000:.1f} ms, "
          f"longest {longest * 1000:.1f} ms (aim {ANSWER_AIM_SECONDS * 1000:.0f})")
    print(f"from the start to the window: {statistics.median(starts):.2f} s (aim {START_AIM_SECONDS})")
    shutil.rmtree(bench.device.parent, ignore_errors=True)
    missed = ratio > RATIO_AIM or longest > ANSWER_AIM_SECONDS or statistics.median(starts) > START_AIM_SECONDS
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
