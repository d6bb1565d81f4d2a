#!/usr/bin/env python3
"""Measures whole backups and restores. The peer is what a user could use instead: tar and lzop.

    bench/compare.py                     every corpus, medians of five rounds
    bench/compare.py small tiny          only these corpora
    bench/compare.py --rounds 3 --folder /dev/shm/bench

Quillbox and the peer run in turn, and their order changes from round to round. The figures are medians and the ratios
of the medians. The script makes the corpora in the folder (a tmpfs by default, some 3 GB). With --keep they stay there.
"""
import argparse
import os
import pathlib
import random
import shutil
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
QUILLBOX = ROOT / "build/bin/quillbox"
LAUNCHER = ROOT / "build/bin/quillbox-bench-launcher"
DOCUMENT_FOLDERS = ["/usr/share/doc", "/usr/include", "/usr/share/man", "/usr/share/perl", "/usr/lib/python3", "/usr/share"]
DOCUMENT_BYTES = 200_000_000

BACKUP_SCRIPT = """command 40003
check 1005
ok
wait "Select"
select 1003 "\\Card"
ok
idle
"""
RESTORE_SCRIPT = """command 40006
wait "Select"
select 1003 "\\Card\\QUILBOX\\QLBX0001.QLT"
ok
wait "Full Restore"
ok
idle
"""

# Largest allowed ratio of the time to that of the peer.
AIMS = {
    ("documents", "backup"): 1.0, ("small", "backup"): 1.15, ("large", "backup"): 0.9,
    ("documents", "restore"): 1.4, ("small", "restore"): 1.5, ("large", "restore"): 0.9,
}
TINY_AIM_MICROSECONDS = 25
TWICE_AIM = 2.1
MEMORY_AIM_KILOBYTES = 24 * 1024
MEMORY_AIM_ITEM_BYTES = 300


def words(source, count):
    """Text that compresses about as well as prose."""
    lexicon = [("".join(source.choice("etaoinshrdlucmfwypvbgkjqxz") for _ in range(source.randint(2, 9))))
               for _ in range(3000)]
    return " ".join(source.choices(lexicon, k=count))


def make_small(folder):
    source = random.Random(1)
    text = words(source, 200_000)
    for number in range(20_000):
        subfolder = folder / f"folder{number // 100:03d}"
        subfolder.mkdir(exist_ok=True)
        start = source.randrange(len(text) - 9000)
        (subfolder / f"note {number:05d}.txt").write_text(text[start:start + source.randint(200, 8000)])


def make_large(folder):
    source = random.Random(2)
    third = 512 * 1024 * 1024 // 3
    (folder / "random.bin").write_bytes(source.randbytes(third))
    text = words(source, 2_000_000).encode()
    (folder / "text.txt").write_bytes((text * (third // len(text) + 1))[:third])
    with open(folder / "zeros.bin", "wb") as zeros:
        for _ in range(third // (1 << 20)):
            zeros.write(bytes(1 << 20))


def make_documents(folder):
    total = 0
    for base in DOCUMENT_FOLDERS:
        for walked, _, names in os.walk(base):
            for name in sorted(names):
                path = pathlib.Path(walked, name)
                if path.is_symlink() or not path.is_file():
                    continue
                target = folder / path.relative_to("/")
                if len(str(target.relative_to(folder))) > 200 or target.exists():
                    continue
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(path, target)
                total += target.stat().st_size
                if total >= DOCUMENT_BYTES:
                    return


def make_tiny(folder, files=100_000):
    for number in range(files):
        subfolder = folder / f"{number // 1000:03d}" / f"{number // 50:05d}"
        if number % 50 == 0:
            subfolder.mkdir(parents=True, exist_ok=True)
        (subfolder / f"{number:06d}.txt").write_text(f"tiny file {number}\n")


CORPORA = {
    "small": make_small,
    "large": make_large,
    "documents": make_documents,
    "tiny": make_tiny,
    "tiny-half": lambda folder: make_tiny(folder, 50_000),
    "one-gigabyte": lambda folder: make_file(folder, 1 << 30),
    "one-megabyte": lambda folder: make_file(folder, 1 << 20),
}
WITHOUT_PEER = ("tiny-half", "one-gigabyte", "one-megabyte")


def make_file(folder, size):
    block = words(random.Random(3), 150_000).encode()[:1 << 19] + random.Random(4).randbytes(1 << 19)
    with open(folder / "file.bin", "wb") as file:
        for _ in range(size >> 20):
            file.write(block)


class Run:
    """Wall and processor seconds of one command, and its largest resident memory in kilobytes."""

    def __init__(self, command, stdin=None):
        # The command is started by a small launcher: otherwise it would inherit the memory maximum of this interpreter.
        reader, writer = os.pipe()
        process = subprocess.run([LAUNCHER, str(writer), *command], input=stdin, text=True, pass_fds=[writer])
        os.close(writer)
        with os.fdopen(reader) as report:
            figures = report.read().split()
        if process.returncode != 0 or len(figures) != 3:
            sys.exit(f"bench: failed: {command}")
        self.wall, self.cpu, self.memory = float(figures[0]), float(figures[1]), int(figures[2])


def empty(folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)


class Corpus:
    def __init__(self, name, base):
        self.name = name
        self.device = base / name / "device"
        self.store = self.device / "object-store"
        self.card = self.device / "cards" / "Card"
        self.restored = base / name / "restored-device"
        self.archive = base / name / "archive.tar.lzo"
        self.untarred = base / name / "untarred"
        self.store.mkdir(parents=True)
        self.card.mkdir(parents=True)
        CORPORA[name](self.store)
        self.items = sum(len(names) for _, _, names in os.walk(self.store))
        self.bytes = sum(p.stat().st_size for p in self.store.rglob("*") if p.is_file())

    def quillbox_backup(self):
        empty(self.card)
        return Run([QUILLBOX, "--device", self.device, "--timeout", "0", "--script", "-"], BACKUP_SCRIPT)

    def peer_backup(self):
        self.archive.unlink(missing_ok=True)
        return Run(["bash", "-c", f"set -o pipefail; tar -C '{self.store}' -cf - . | lzop -1 -c >'{self.archive}'"])

    def quillbox_restore(self):
        empty(self.restored)
        (self.restored / "object-store").mkdir()
        return Run([QUILLBOX, "--device", self.restored, "--card", f"Card={self.card}", "--timeout", "0",
                    "--script", "-"], RESTORE_SCRIPT)

    def peer_restore(self):
        empty(self.untarred)
        return Run(["bash", "-c", f"set -o pipefail; lzop -d -c '{self.archive}' | tar -C '{self.untarred}' -xf -"])

    def compare(self):
        """Ends the script unless every name and byte was restored: otherwise the figures mean nothing."""
        if subprocess.run(["diff", "-r", self.store, self.restored / "object-store"]).returncode != 0:
            sys.exit(f"bench: {self.name}: the restored files differ")


def medians(runs):
    return statistics.median(r.wall for r in runs), statistics.median(r.cpu for r in runs), max(r.memory for r in runs)


def measure(corpus, rounds):
    sides = [("quillbox", corpus.quillbox_backup, corpus.quillbox_restore)]
    if corpus.name not in WITHOUT_PEER:
        sides.append(("peer", corpus.peer_backup, corpus.peer_restore))
    results = {}
    for round_number in range(rounds):
        order = sides[round_number % len(sides):] + sides[:round_number % len(sides)]
        for operation in (1, 2):
            for side in order:
                key = (("backup", "restore")[operation - 1], side[0])
                results.setdefault(key, []).append(side[operation]())
        if round_number == 0:
            corpus.compare()
    return {key: medians(runs) for key, runs in results.items()}


def report(corpus, result):
    missed = 0
    for operation in ("backup", "restore"):
        wall, cpu, memory = result[operation, "quillbox"]
        line = (f"{corpus.name:13} {operation:8} {wall:7.3f} s {cpu:7.3f} s cpu  {memory / 1024:6.1f} MB "
                f"{wall / corpus.items * 1e6:7.1f} us/item")
        if (operation, "peer") in result:
            peer_wall, peer_cpu, _ = result[operation, "peer"]
            line += f"   peer {peer_wall:7.3f} s {peer_cpu:7.3f} s cpu   ratio {wall / peer_wall:5.2f}"
            line += f" (cpu {cpu / peer_cpu:4.2f})"
            aim = AIMS.get((corpus.name, operation))
            if aim:
                met = wall / peer_wall <= aim
                line += f"   aim {aim:.2f} {'met' if met else 'MISSED'}"
                missed += not met
        if corpus.name == "tiny":
            met = wall / corpus.items * 1e6 <= TINY_AIM_MICROSECONDS
            line += f"   aim {TINY_AIM_MICROSECONDS} us/item {'met' if met else 'MISSED'}"
            missed += not met
        allowed = MEMORY_AIM_KILOBYTES + corpus.items * MEMORY_AIM_ITEM_BYTES / 1024
        if memory > allowed:
            line += f"   memory aim {allowed / 1024:.0f} MB MISSED"
            missed += 1
        print(line, flush=True)
    return missed


def report_growth(results):
    missed = 0
    for small, large, what in (("tiny-half", "tiny", "twice the files"),):
        if small in results and large in results:
            for operation in ("backup", "restore"):
                ratio = results[large][operation, "quillbox"][0] / results[small][operation, "quillbox"][0]
                met = ratio <= TWICE_AIM
                print(f"{what}: {operation} takes {ratio:.2f} times as long   aim {TWICE_AIM} {'met' if met else 'MISSED'}")
                missed += not met
    if "one-megabyte" in results and "one-gigabyte" in results:
        for operation in ("backup", "restore"):
            one, thousand = (results[name][operation, "quillbox"][2] for name in ("one-megabyte", "one-gigabyte"))
            print(f"memory of a {operation}: {one / 1024:.1f} MB for a file of 1 MB, {thousand / 1024:.1f} MB for one of 1 GB")
    return missed


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("corpora", nargs="*", choices=[[], *CORPORA], help="which corpora; all without one")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--folder", type=pathlib.Path, default=pathlib.Path(f"/dev/shm/quillbox-bench-{os.getpid()}"))
    parser.add_argument("--keep", action="store_true")
    arguments = parser.parse_args()
    if not QUILLBOX.exists() or not LAUNCHER.exists() or not shutil.which("lzop"):
        sys.exit("bench: build first (./run --version) and have lzop installed (./check does)")
    results, missed = {}, 0
    arguments.folder.mkdir(parents=True)
    try:
        for name in arguments.corpora or CORPORA:
            corpus = Corpus(name, arguments.folder)
            print(f"{name}: {corpus.items} files, {corpus.bytes / 1e6:.1f} MB", flush=True)
            results[name] = measure(corpus, arguments.rounds)
            missed += report(corpus, results[name])
            if not arguments.keep:
                shutil.rmtree(arguments.folder / name)
        missed += report_growth(results)
    finally:
        if not arguments.keep:
            shutil.rmtree(arguments.folder, ignore_errors=True)
    print(f"{missed} aims missed" if missed else "every aim met")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
