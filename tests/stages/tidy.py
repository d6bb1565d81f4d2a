#!/usr/bin/env python3
"""Runs clang-tidy on the sources that could have a new complaint since they last had none.

    tidy.py BUILD-FOLDER SOURCE...      BUILD-FOLDER has the compile commands
Exit code 1: clang-tidy has complaints, and they are on standard output.

What a source was found good for is kept as an empty file whose name is a hash of all that clang-tidy read: the compile
command, clang-tidy's own version and settings, the source, and each header of the project that the source can include. Headers
of the system aren't part of it.
"""
import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

TIDY = "clang-tidy-14"
ROOT = pathlib.Path(__file__).resolve().parents[2]
INCLUDE = re.compile(rb'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)', re.MULTILINE)


@functools.cache
def content(path):
    return path.read_bytes()


@functools.cache
def found(path):
    return path.is_file()


def project_files(source, folders):
    """The source and all that it can include, whatever its #if say."""
    seen, waiting = set(), [source]
    while waiting:
        path = waiting.pop()
        if path in seen:
            continue
        seen.add(path)
        for quoted, angled in INCLUDE.findall(content(path)):
            name = os.fsdecode(quoted or angled)
            places = ([path.parent] if quoted else []) + folders
            waiting += [place / name for place in places if found(place / name)][:1]
    return sorted(seen)


def state(entry):
    words = shlex.split(entry["command"])
    base = pathlib.Path(entry["directory"])
    folders = [base / word[2:] for word in words if word.startswith("-I")]
    known = hashlib.sha256(entry["command"].encode() + SETTINGS)
    for path in project_files(base / entry["file"], folders):
        known.update(hashlib.sha256(str(path).encode() + b"\0" + content(path)).digest())
    return known.hexdigest()


def complaints(build, source):
    run = subprocess.run([TIDY, "-p", build, "--quiet", source], capture_output=True, text=True)
    return run.returncode and (run.stdout or run.stderr)


SETTINGS = (ROOT / ".clang-tidy").read_bytes() + subprocess.run([TIDY, "--version"], capture_output=True, check=True).stdout


def main(build, *sources):
    wanted = {str(ROOT / source) for source in sources}
    passed = pathlib.Path(build, "passed")
    passed.mkdir(exist_ok=True)
    entries = json.loads(pathlib.Path(build, "compile_commands.json").read_text())
    marks = {entry["file"]: passed / state(entry) for entry in entries if entry["file"] in wanted}
    for missing in sorted(wanted - set(marks)):
        print(f"{missing}: no target compiles it")
    due = [source for source, mark in marks.items() if not mark.exists()]
    failed = wanted != set(marks)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for source, text in zip(due, pool.map(functools.partial(complaints, build), due)):
            if text:
                failed = True
                print(text)
            else:
                marks[source].touch()
    print(f"clang-tidy read {len(due)} of {len(marks)} sources; the others and what they include are unchanged")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
