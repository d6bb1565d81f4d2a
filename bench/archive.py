#!/usr/bin/env python3
"""Measures the commands on many sets against the tools that a user could use instead.

    bench/archive.py                     all, medians of five rounds
    bench/archive.py find diff --rounds 3 --folder /dev/shm/bench

verify   500 MB, sealed or not    lzop -t on the same content packed by lzop -1
find     99 sets, 20,000 items    grep -c on the list files
diff     two sets, 20,000 files   quillbox-set verify on both
covered  20,000 files             diff -rq on the device's folder and an extracted copy
salvage  500 MB without the list  quillbox-set verify on the set

The command on the right is the peer. Each command and its peer run in turn. The figures are medians, and the ratios are
those of the medians. The script needs some 1.5 GB in the folder, which is a tmpfs by default.
"""
import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import time

from compare import BACKUP_SCRIPT, QUILLBOX, ROOT, Run, make_large, make_small

SET_TOOL = ROOT / "build/bin/quillbox-set"
DEVICE_TOOL = ROOT / "build/bin/quillbox-device"
SETS = 99
FIRST_RESULT_AIM = 0.05
AIMS = {"verify": 0.8, "find": 2.0, "diff": 1.2, "covered": 1.5, "salvage": 2.0}


def backed_up(base, make):
    """Makes a device with the files and backs it up. Returns the device, and the path of the set's list."""
    device, card = base / "device", base / "device/cards/Card"
    (device / "object-store").mkdir(parents=True)
    card.mkdir(parents=True)
    make(device / "object-store")
    script = BACKUP_SCRIPT.replace("check 1005\n", "check 1005\ncheck 1007\n")
    for text in ("idle\n", script):  # when the program ends for the first time, it writes its settings to the registry
        Run([QUILLBOX, "--device", device, "--timeout", "0", "--script", "-"], text)
    folder = base / "sets"  # not on the device, because some measurements delete it
    shutil.move(card / "QUILBOX", folder)
    return device, folder / "QLBX0001.QLT"


def made_verify(base):
    device, path = backed_up(base, make_large)
    packed = base / "content.tar.lzo"
    Run(["bash", "-c", f"tar -C '{device}/object-store' -cf - . | lzop -1 -c >'{packed}'"])
    shutil.rmtree(device)
    return [SET_TOOL, "verify", path], ["lzop", "-t", packed]


def made_sealed(base):
    command, peer = made_verify(base)
    subprocess.run([SET_TOOL, "seal", command[-1]], stdout=subprocess.DEVNULL, check=True)
    return command, peer


def made_find(base):
    _, path = backed_up(base, make_small)
    folder = path.parent
    for number in range(2, SETS + 1):
        shutil.copy(path, folder / f"QLBX{number:04d}.QLT")
        os.link(path.with_suffix(".QDT"), folder / f"QLBX{number:04d}.QDT")
    # The list files contain UTF-16, so grep searches for its bytes.
    pattern = "".join(f"{c}\\x00" for c in "note 01234")
    return ([SET_TOOL, "find", "note 01234*", folder],
            ["bash", "-c", f"LC_ALL=C grep -a -c -P '{pattern}' {folder}/*.QLT"])


def made_diff(base):
    device, path = backed_up(base, make_small)
    for number in range(0, 20_000, 200):
        (device / f"object-store/folder{number // 100:03d}/note {number:05d}.txt").write_text("changed")
    newer = path.with_name("QLBX0002.QLT")
    (device / "cards/Card").mkdir(exist_ok=True)
    Run([QUILLBOX, "--device", device, "--timeout", "0", "--script", "-"], BACKUP_SCRIPT.replace("check 1005\n", "check 1005\ncheck 1007\n"))
    for ending in (".QLT", ".QDT"):
        shutil.move((device / "cards/Card/QUILBOX/QLBX0001").with_suffix(ending), newer.with_suffix(ending))
    return [SET_TOOL, "diff", path, newer], [SET_TOOL, "verify", path, newer]


def made_covered(base):
    device, path = backed_up(base, make_small)
    copy = base / "copy"
    subprocess.run([SET_TOOL, "extract", path, copy], stdout=subprocess.DEVNULL, check=True)
    return [DEVICE_TOOL, "covered", device, path], ["diff", "-rq", "-x", "registry.reg", device / "object-store", copy]


def made_salvage(base):
    device, path = backed_up(base, make_large)
    shutil.rmtree(device)
    out = base / "recovered"
    salvage = f"rm -rf '{out}' && '{SET_TOOL}' salvage '{path.with_suffix('.QDT')}' --into '{out}'"
    return ["bash", "-c", salvage], [SET_TOOL, "verify", path]


MADE = {"verify": made_verify, "verify sealed": made_sealed, "find": made_find, "diff": made_diff, "covered": made_covered,
        "salvage": made_salvage}
CODES = {"diff": 1, "salvage": 1}  # diff: the sets differ. salvage: the file of random bytes is unproven.


def seconds(command, code=0):
    started = time.perf_counter()
    done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    taken = time.perf_counter() - started
    if done.returncode != code:
        sys.exit(f"bench: failed with {done.returncode}: {command}")
    return taken


def first_result(command):
    started = time.perf_counter()
    with subprocess.Popen(command, stdout=subprocess.PIPE) as process:
        process.stdout.read(1)
        taken = time.perf_counter() - started
        process.stdout.read()
    return taken


def measure(name, base, rounds):
    command, peer = MADE[name](base)
    times = {"own": [], "peer": []}
    for number in range(rounds):
        for side in (["own", "peer"], ["peer", "own"])[number % 2]:
            times[side].append(seconds(command, CODES.get(name, 0)) if side == "own" else seconds(peer))
    own, other = statistics.median(times["own"]), statistics.median(times["peer"])
    aim = AIMS.get(name)
    missed = aim is not None and own / other > aim
    text = f"   aim {aim:.2f} {'MISSED' if missed else 'met'}" if aim else ""
    print(f"{name:14} {own:7.3f} s   peer {other:7.3f} s   ratio {own / other:5.2f}{text}", flush=True)
    if name == "find":
        first = statistics.median(first_result(command) for _ in range(rounds))
        late = first > FIRST_RESULT_AIM
        print(f"find: the first result after {first * 1000:.0f} ms   aim {FIRST_RESULT_AIM * 1000:.0f} {'MISSED' if late else 'met'}")
        missed = missed or late
    return missed


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", nargs="*", choices=[[], *MADE], help="which comparisons; all without one")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--folder", type=pathlib.Path, default=pathlib.Path(f"/dev/shm/quillbox-bench-{os.getpid()}"))
    arguments = parser.parse_args()
    missed = 0
    for name in arguments.what or MADE:
        try:
            missed += measure(name, arguments.folder / name, arguments.rounds)
        finally:
            shutil.rmtree(arguments.folder, ignore_errors=True)
    print(f"{missed} aims missed" if missed else "every aim met")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
