#!/usr/bin/env python3
"""Measures the backup and restore of databases. The peer is sqlite3, which dumps and loads a table with the same rows.

    bench/databases.py                     medians of five rounds
    bench/databases.py --rounds 9 --records 10000

Quillbox and the peer run in turn, and their order changes from round to round. The ratios are those of whole runs,
including the start of the program. The time of the start alone is printed separately. To measure it, the script runs the
program on the same device without actions. The files are in a tmpfs by default.
"""
import argparse
import json
import os
import pathlib
import random
import shutil
import sqlite3
import subprocess
import sys

from compare import BACKUP_SCRIPT, LAUNCHER, QUILLBOX, RESTORE_SCRIPT, Run, empty, medians, words

DEVICE_TOOL = QUILLBOX.with_name("quillbox-device")
ALL_FILES, ALL_DATABASES = "check 1005", "check 1006"
# Largest allowed ratio of Quillbox's time to that of the peer.
AIMS = {"backup": 3.0, "restore": 5.0}
# Twice as many records may take at most this many times as long. A larger ratio would mean that the time for a record
# grows with the number of records.
TWICE_AIM = 2.2


def rows(count):
    """Yields rows with a value of each type: three texts, four numbers, a flag, a time, bytes."""
    source = random.Random(1)
    text = words(source, 50_000).split(" ")

    def phrase(length):
        start = source.randrange(len(text) - length)
        return " ".join(text[start:start + length])

    for number in range(count):
        yield (phrase(2), phrase(4), phrase(8), source.randint(-32768, 32767), source.randint(0, 65535), number,
               source.randint(0, 2 ** 32 - 1), number % 2, source.randint(0, 2 ** 60), source.randbytes(40))


IDS = ("0001001f", "0002001f", "0003001f", "00040002", "00050012", "00060003", "00070013", "0008000b", "00090040", "000a0041")


def lines(count):
    yield json.dumps({"database": "Contacts", "type": 24, "sort": [{"property": 0x1001F, "flags": 2}]})
    for row in rows(count):
        values = [value.hex() if isinstance(value, bytes) else value for value in row]
        yield json.dumps({"record": [{"id": identifier, "value": value} for identifier, value in zip(IDS, values)]})


class Corpus:
    def __init__(self, records, base):
        self.records = records
        self.base = base / str(records)
        self.device = self.base / "device"
        self.card = self.device / "cards" / "Card"
        self.restored = self.base / "restored"
        self.table = self.base / "rows.db"
        self.dump = self.base / "dump.sql"
        self.loaded = self.base / "loaded.db"
        (self.device / "object-store").mkdir(parents=True)
        self.card.mkdir(parents=True)
        subprocess.run([DEVICE_TOOL, "database", "import", self.device, "-"], check=True, text=True,
                       input="\n".join(lines(records)) + "\n")
        table = sqlite3.connect(self.table)
        table.execute("CREATE TABLE contacts (name TEXT, company TEXT, notes TEXT, a INTEGER, b INTEGER, c INTEGER, d INTEGER, "
                      "flag INTEGER, time INTEGER, picture BLOB)")
        table.executemany(f"INSERT INTO contacts VALUES ({', '.join('?' * len(IDS))})", rows(records))
        table.commit()
        table.close()

    def quillbox(self, device, script, *arguments):
        return Run([QUILLBOX, "--device", device, *arguments, "--timeout", "0", "--script", "-"], script)

    def quillbox_backup(self):
        empty(self.card)
        return self.quillbox(self.device, BACKUP_SCRIPT.replace(ALL_FILES, ALL_DATABASES))

    def quillbox_restore(self):
        empty(self.restored)
        (self.restored / "object-store").mkdir()
        return self.quillbox(self.restored, RESTORE_SCRIPT, "--card", f"Card={self.card}")

    def quillbox_start(self):
        return self.quillbox(self.device, "idle\n")

    def peer_backup(self):
        return Run(["bash", "-c", f"sqlite3 '{self.table}' .dump >'{self.dump}'"])

    def peer_restore(self):
        self.loaded.unlink(missing_ok=True)
        return Run(["bash", "-c", f"sqlite3 '{self.loaded}' <'{self.dump}'"])

    def compare(self):
        """Ends the script unless every record was restored. If they weren't, the figures would mean nothing.

        A restore reverses the order of the records and sets the flag to 0.
        """
        def exported(device):
            found = subprocess.run([DEVICE_TOOL, "database", "export", device], check=True, capture_output=True, text=True)
            return [json.loads(line) for line in found.stdout.splitlines()]

        head, *records = exported(self.device)
        for record in records:
            record["record"][7]["value"] = 0
        if [head, *records[::-1]] != exported(self.restored):
            sys.exit("bench: the restored records differ")
        if subprocess.run(["cmp", self.table, self.loaded], stdout=subprocess.DEVNULL).returncode != 0:
            count = sqlite3.connect(self.loaded).execute("SELECT count(*) FROM contacts").fetchone()
            if count != (self.records,):
                sys.exit("bench: the peer's rows differ")


def measure(corpus, rounds):
    sides = [("quillbox", corpus.quillbox_backup, corpus.quillbox_restore), ("peer", corpus.peer_backup, corpus.peer_restore)]
    results = {}
    for number in range(rounds):
        order = sides[number % 2:] + sides[:number % 2]
        for operation in ("backup", "restore"):
            for name, *calls in order:
                results.setdefault((operation, name), []).append(calls[operation == "restore"]())
        results.setdefault("start", []).append(corpus.quillbox_start())
        if number == 0:
            corpus.compare()
    return {key: medians(runs) for key, runs in results.items()}


def report(corpus, result):
    missed = 0
    print(f"{corpus.records} records", flush=True)
    start_wall, start_cpu, _ = result["start"]
    print(f"  start-up alone {start_wall:7.3f} s {start_cpu:7.3f} s cpu")
    for operation, aim in AIMS.items():
        wall, cpu, memory = result[operation, "quillbox"]
        peer_wall, peer_cpu, _ = result[operation, "peer"]
        met = wall / peer_wall <= aim
        missed += not met
        print(f"  {operation:14} {wall:7.3f} s {cpu:7.3f} s cpu  {memory / 1024:5.1f} MB {wall / corpus.records * 1e6:6.2f} us/record"
              f"   peer {peer_wall:7.3f} s {peer_cpu:7.3f} s cpu   ratio {wall / peer_wall:5.2f} (cpu {cpu / peer_cpu:4.2f}, "
              f"without start-up {(wall - start_wall) / peer_wall:4.2f})   aim {aim:.1f} {'met' if met else 'MISSED'}", flush=True)
    return missed


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--records", type=int, default=40_000, choices=range(2, 65_536), metavar="2-65535")
    parser.add_argument("--folder", type=pathlib.Path, default=pathlib.Path(f"/dev/shm/quillbox-bench-{os.getpid()}"))
    arguments = parser.parse_args()
    if not QUILLBOX.exists() or not DEVICE_TOOL.exists() or not LAUNCHER.exists() or not shutil.which("sqlite3"):
        sys.exit("bench: build first (./run --version) and have sqlite3 installed (./check does)")
    arguments.folder.mkdir(parents=True)
    try:
        half, whole = (Corpus(records, arguments.folder) for records in (arguments.records // 2, arguments.records))
        results = {corpus: measure(corpus, arguments.rounds) for corpus in (half, whole)}
        missed = sum(report(corpus, result) for corpus, result in results.items())
        for operation in AIMS:
            ratio = results[whole][operation, "quillbox"][0] / results[half][operation, "quillbox"][0]
            missed += ratio > TWICE_AIM
            print(f"twice the records: {operation} takes {ratio:.2f} times as long   aim {TWICE_AIM} "
                  f"{'met' if ratio <= TWICE_AIM else 'MISSED'}")
    finally:
        shutil.rmtree(arguments.folder, ignore_errors=True)
    print(f"{missed} aims missed" if missed else "every aim met")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
