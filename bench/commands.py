#!/usr/bin/env python3
"""Measures `quillbox backup` against the same backup by script.

    bench/commands.py                    documents, small and large files, medians of five rounds
    bench/commands.py large --rounds 3 --folder /dev/shm/bench

Four kinds of backup run in turn: the script, the command, the command without checksums, and the command with --verify.
Each round begins with another kind. The corpora are those of compare.py. As in compare.py, a disturbed round is
repeated. The script reads no set back and writes no checksums.
"""
import argparse
import os
import pathlib
import shutil
import sys

import compare

CORPORA = ("documents", "small", "large")
KINDS = {"script": None, "sealed": [], "unsealed": ["--no-seal"], "verified": ["--verify"]}
# Largest allowed ratio of the median of the first kind to that of the second.
AIMS = {("sealed", "script"): 1.05, ("sealed", "unsealed"): 1.05, ("verified", "script"): 2.00}


def back_up(corpus, kind):
    if KINDS[kind] is None:
        return corpus.quillbox_backup()
    compare.empty(corpus.card)
    return compare.Run([compare.QUILLBOX, "--device", corpus.device, "backup", "--to", "Card", "--files", "--quiet",
                        *KINDS[kind]])


def measure(corpus, rounds):
    """Returns the runs of the quietest rounds by kind."""
    def run_one(number):
        turn = number % len(KINDS)
        kinds = list(KINDS)
        return {kind: back_up(corpus, kind) for kind in kinds[turn:] + kinds[:turn]}

    kept = compare.quietest(corpus.name, rounds, run_one)
    return {kind: [runs[kind] for runs in kept] for kind in KINDS}


def report(corpus, runs, verdict):
    walls = {}
    for kind in KINDS:
        walls[kind], cpu, memory = compare.medians(runs[kind])
        print(f"{corpus.name:10} {kind:9} {walls[kind]:7.3f} s {cpu:7.3f} s cpu {memory / 1024:6.1f} MB")
    for (kind, base), aim in AIMS.items():
        ratio = walls[kind] / walls[base]
        print(f"{corpus.name:10} {kind} to {base}: {ratio:.2f}" + verdict.of(f"{corpus.name}, {kind} to {base}", ratio, aim),
              flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("corpora", nargs="*", choices=[[], *CORPORA])
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--folder", type=pathlib.Path, default=pathlib.Path(f"/dev/shm/quillbox-commands-{os.getpid()}"))
    arguments = parser.parse_args()
    verdict = compare.Verdict()
    arguments.folder.mkdir(parents=True)
    try:
        for name in arguments.corpora or CORPORA:
            corpus = compare.Corpus(name, arguments.folder)
            report(corpus, measure(corpus, arguments.rounds), verdict)
            shutil.rmtree(arguments.folder / name)
    finally:
        shutil.rmtree(arguments.folder, ignore_errors=True)
    return verdict.tell()


if __name__ == "__main__":
    sys.exit(main())
