#!/usr/bin/env python3
"""Measures quillbox-mount against quillbox-set extract and a plain folder.

    bench/mount.py                     all, medians of five rounds
    bench/mount.py small list --rounds 3 --folder /dev/shm/bench

small   cp -r of 20,000 files       quillbox-set extract of the same set
large   cp -r of 512 MB             the same
list    ls -lU of 100,000 files     ls -lU of the extracted folder
tree    ls -lUR of as many, in folders of 50    ls -lUR of the extracted folder
random  4 KB anywhere in 500 MB     no peer: the time of a read after all blocks were unpacked once

Each copy and each listing begins with a new mount, so the kernel's caches are empty. The figures are medians, and the
ratios are those of the medians. The script needs some 3 GB in the folder, which is a tmpfs by default.
"""
import argparse
import contextlib
import functools
import os
import pathlib
import random
import shutil
import statistics
import subprocess
import sys
import time

from archive import SET_TOOL, backed_up, seconds
from compare import ROOT, make_large, make_small, make_tiny, words

MOUNT_TOOL = ROOT / "build/bin/quillbox-mount"
AIMS = {"small": 1.5, "large": 1.5, "list": 2.0, "tree": 2.0}
RANDOM_AIM = 0.002
READS = 2000


def make_one(folder):
    source = random.Random(3)
    text = words(source, 1_000_000).encode()
    with open(folder / "one.bin", "wb") as one:
        while one.tell() < 500_000_000:
            one.write(text[:1_000_000] + source.randbytes(1_000_000))


def make_one_folder(folder):
    for number in range(100_000):
        (folder / f"{number:06d}.txt").write_text(f"tiny file {number}\n")


@contextlib.contextmanager
def mounted(path):
    """Mounts the set, and yields its folder."""
    folder = path.parent.parent / "shown"
    folder.mkdir(exist_ok=True)
    subprocess.run([MOUNT_TOOL, path, folder], check=True)
    try:
        yield next(folder.iterdir())
    finally:
        subprocess.run(["fusermount3", "-u", folder], check=True)


def timed_copy(path, base):
    with mounted(path) as shown:
        own = seconds(["cp", "-r", shown, base / "copy"])
    shutil.rmtree(base / "copy")
    peer = seconds([SET_TOOL, "extract", path, base / "extracted"])
    shutil.rmtree(base / "extracted")
    return own, peer


def timed_list(option, path, base):
    if not (base / "extracted").exists():
        seconds([SET_TOOL, "extract", path, base / "extracted"])
    with mounted(path) as shown:
        own = seconds(["ls", option, shown])
    return own, seconds(["ls", option, base / "extracted"])


def compared(name, base, rounds, make, timed):
    _, path = backed_up(base, make)
    times = [timed(path, base) for _ in range(rounds)]
    own, peer = (statistics.median(side) for side in zip(*times))
    missed = own / peer > AIMS[name]
    print(f"{name:8} {own:7.3f} s   peer {peer:7.3f} s   ratio {own / peer:5.2f}   aim {AIMS[name]:.2f} {'MISSED' if missed else 'met'}",
          flush=True)
    return missed


def measure_random(base):
    _, path = backed_up(base, make_one)
    chance, taken = random.Random(4), []
    with mounted(path) as shown, open(shown / "one.bin", "rb", buffering=0) as file:
        started = time.perf_counter()
        size = os.fstat(file.fileno()).st_size
        os.pread(file.fileno(), 1, size - 1)
        first = time.perf_counter() - started
        for _ in range(READS):
            start = chance.randrange(size - 4096)
            started = time.perf_counter()
            os.pread(file.fileno(), 4096, start)
            taken.append(time.perf_counter() - started)
    middle, late = statistics.median(taken), statistics.quantiles(taken, n=100)[98]
    missed = middle > RANDOM_AIM
    print(f"random   {middle * 1000:.2f} ms, 99 of 100 below {late * 1000:.2f} ms; the last byte first {first:.2f} s   "
          f"aim {RANDOM_AIM * 1000:.0f} ms {'MISSED' if missed else 'met'}", flush=True)
    return missed


KINDS = {"small": lambda base, rounds: compared("small", base, rounds, make_small, timed_copy),
         "large": lambda base, rounds: compared("large", base, rounds, make_large, timed_copy),
         "list": lambda base, rounds: compared("list", base, rounds, make_one_folder, functools.partial(timed_list, "-lU")),
         "tree": lambda base, rounds: compared("tree", base, rounds, make_tiny, functools.partial(timed_list, "-lUR")),
         "random": lambda base, rounds: measure_random(base)}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", nargs="*", choices=[[], *KINDS], help="which measurements; all without one")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--folder", type=pathlib.Path, default=pathlib.Path(f"/dev/shm/quillbox-bench-{os.getpid()}"))
    arguments = parser.parse_args()
    missed = 0
    for name in arguments.what or KINDS:
        try:
            missed += KINDS[name](arguments.folder / name, arguments.rounds)
        finally:
            shutil.rmtree(arguments.folder, ignore_errors=True)
    print(f"{missed} aims missed" if missed else "every aim met")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
