#!/usr/bin/env python3
"""Measures the selection tree: listing, marking and collapsing 100,000 files, by script and in the window.

    bench/tree.py                        medians of five rounds
    bench/tree.py --rounds 3 --folder /dev/shm/bench --bin build/bin

The cost of an action is the difference between the times of two scripts, one with the action and one without. So the
start of the program doesn't count. The peers are what a user would type: `ls -lU` lists a folder, and
`find -printf '%p %T@'` walks through one. Each round runs the two scripts and the peer of an operation, in an order that changes from round to round.
The figures are medians, and the ratios are those of the medians.
"""
import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import sys

import compare

BIN = compare.ROOT / "build/bin"
FILES = 100_000
FILES_A_FOLDER = 50

LIST = 'expand "Files"\n'
EXPAND = LIST + 'expand "Files\\big"\n'
SELECT = LIST + 'click "Files\\big"\n'
MARK = SELECT + "command 500\n"
UNMARK = "command 501\n"
COLLAPSE = 'collapse "Files\\big"\n'
REPEATS = 5

# For each operation: the corpus, the script without the action, the script with it, how often the second script does
# the action, and a command (the peer). The time of the action is compared with the time of the peer.
OPERATIONS = {
    "expand": ("flat", LIST, EXPAND, 1, "ls -lU '{}'"),
    "mark": ("deep", SELECT, MARK, 1, "find '{}' -printf '%p %T@\\n'"),
    "mark again": ("deep", MARK, MARK + "command 500\n" * REPEATS, REPEATS, "find '{}' -printf '%p %T@\\n'"),
    "unmark": ("deep", MARK, MARK + UNMARK, 1, "find '{}' -printf '%p %T@\\n'"),
}
# These operations are measured with all files and with half of them. Each script also undoes its action, and repeats
# both steps, because one action alone takes too little time for a comparison.
GROWING = {
    "expand and collapse": ("flat", LIST, LIST + ('expand "Files\\big"\n' + COLLAPSE) * REPEATS),
    "mark and unmark": ("deep", SELECT, SELECT + ("command 500\n" + UNMARK) * REPEATS),
}
RATIO_AIMS = {"expand": 2.0, "mark": 2.5, "mark again": 2.5, "unmark": 2.5}
COLLAPSE_AIM_MILLISECONDS = 300
TWICE_AIM = 2.1
CORE_AIM_BYTES = 400
WINDOW_AIM_BYTES = 2 * CORE_AIM_BYTES
FIRST_SCREEN_AIM_MILLISECONDS = 1000
FRAME_AIM_MILLISECONDS = 16


class Corpus:
    def __init__(self, base, shape, files):
        self.device = base / f"{shape}-{files}" / "device"
        self.big = self.device / "object-store" / "big"
        (self.device / "cards").mkdir(parents=True)
        self.files = files
        for number in range(files):
            folder = self.big
            if shape == "deep":
                group = number // FILES_A_FOLDER
                folder = self.big / f"{group // 50:03d}" / f"folder {group:04d}"
            if number % FILES_A_FOLDER == 0:
                folder.mkdir(parents=True, exist_ok=True)
            (folder / f"file number {number:06d}.txt").touch()

    def run(self, script):
        command = [BIN / "quillbox", "--device", self.device, "--timeout", "0", "--script", "-"]
        return compare.Run(command, script + "idle\n")


class Figures:
    """The times of one action on one corpus in seconds, as medians of the rounds."""

    def __init__(self, corpus, without, action, rounds, repeats=1, peer=None):
        sides = {"without": lambda: corpus.run(without), "with": lambda: corpus.run(action)}
        if peer:
            command = ["sh", "-c", f"exec {peer.format(corpus.big)} >/dev/null"]
            sides["peer"] = lambda: compare.Run(command)
        names = list(sides)
        runs = {name: [] for name in names}
        for number in range(rounds):
            for name in names[number % len(names):] + names[:number % len(names)]:
                runs[name].append(sides[name]())
        wall, cpu = ({name: statistics.median(getattr(run, figure) for run in runs[name]) for name in names}
                     for figure in ("wall", "cpu"))
        self.wall = (wall["with"] - wall["without"]) / repeats
        self.cpu = (cpu["with"] - cpu["without"]) / repeats
        self.peer_wall, self.peer_cpu = wall.get("peer"), cpu.get("peer")


class Verdicts:
    missed = 0

    def add(self, figure, aim):
        met = figure <= aim
        self.missed += not met
        return f"   aim {aim:g} {'met' if met else 'MISSED'}"


def report_operation(name, figures, verdicts):
    ratio = figures.wall / figures.peer_wall
    print(f"{name:11} {figures.wall:7.3f} s {figures.cpu:7.3f} s cpu"
          f"   peer {figures.peer_wall:7.3f} s {figures.peer_cpu:7.3f} s cpu"
          f"   ratio {ratio:5.2f} (cpu {figures.cpu / figures.peer_cpu:4.2f})"
          + verdicts.add(ratio, RATIO_AIMS[name]), flush=True)


def report_growth(name, whole, half, verdicts):
    growth = whole.wall / half.wall
    print(f"twice the files: {name} takes {growth:.2f} times as long (cpu {whole.cpu / half.cpu:.2f})"
          + verdicts.add(growth, TWICE_AIM), flush=True)


def report_memory(corpus, verdicts):
    """Reports the memory that the core needs for a file: its item in the tree and its entry in the list of marks."""
    both = corpus.run(EXPAND + 'click "Files\\big"\ncommand 500\n').memory - corpus.run(LIST).memory
    each = both * 1024 / corpus.files
    print(f"memory      {each:.0f} bytes for a file that is listed and marked" + verdicts.add(each, CORE_AIM_BYTES))


def report_window(corpus, rounds, verdicts):
    driver = BIN / "quillbox-bench-tree-window"
    if not driver.exists():
        print("window      not built")
        return
    environment = {"QT_QPA_PLATFORM": "offscreen", **os.environ}
    results = []
    for _ in range(rounds):
        output = subprocess.run([driver, corpus.device, "big"], env=environment, check=True, timeout=600, text=True,
                                capture_output=True).stdout
        results.append({name: float(value) for name, value in map(str.split, output.splitlines())})
    median = {name: statistics.median(result[name] for result in results) for name in results[0]}
    first, frame = median["expand"], median["scroll-median"]
    print(f"window      {first:.0f} ms to the first screen" + verdicts.add(first, FIRST_SCREEN_AIM_MILLISECONDS))
    print(f"            {frame:.1f} ms for a picture while scrolling, {median['scroll-worst']:.1f} at most"
          + verdicts.add(frame, FRAME_AIM_MILLISECONDS))
    print(f"            {median['mark']:.0f} ms to mark all")
    print(f"            {median['collapse']:.0f} ms to collapse"
          + verdicts.add(median["collapse"], COLLAPSE_AIM_MILLISECONDS))
    each = median["mark-kilobytes"] * 1024 / median["items"]
    print(f"            {each:.0f} bytes for a file that is listed and marked" + verdicts.add(each, WINDOW_AIM_BYTES))


def main():
    global BIN
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--folder", type=pathlib.Path, default=pathlib.Path(f"/dev/shm/quillbox-tree-{os.getpid()}"))
    parser.add_argument("--bin", type=pathlib.Path, default=BIN)
    arguments = parser.parse_args()
    BIN = arguments.bin.resolve()
    compare.LAUNCHER = BIN / "quillbox-bench-launcher"
    if not compare.LAUNCHER.exists() or not (BIN / "quillbox").exists():
        sys.exit("bench: build first (./run --version)")
    arguments.folder.mkdir(parents=True)
    verdicts = Verdicts()
    try:
        corpora = {(shape, files): Corpus(arguments.folder, shape, files)
                   for shape in ("flat", "deep") for files in (FILES, FILES // 2)}
        for name, (shape, without, action, repeats, peer) in OPERATIONS.items():
            figures = Figures(corpora[shape, FILES], without, action, arguments.rounds, repeats, peer)
            report_operation(name, figures, verdicts)
        for name, (shape, without, action) in GROWING.items():
            whole, half = (Figures(corpora[shape, files], without, action, arguments.rounds)
                           for files in (FILES, FILES // 2))
            report_growth(name, whole, half, verdicts)
        report_memory(corpora["flat", FILES], verdicts)
        report_window(corpora["flat", FILES], arguments.rounds, verdicts)
    finally:
        shutil.rmtree(arguments.folder, ignore_errors=True)
    print(f"{verdicts.missed} aims missed" if verdicts.missed else "every aim met")
    return 1 if verdicts.missed else 0


if __name__ == "__main__":
    sys.exit(main())
