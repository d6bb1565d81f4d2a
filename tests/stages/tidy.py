#!/usr/bin/env python3
"""Runs clang-tidy on the sources that may have a new complaint because something changed since they last had none.

    tidy.py BUILD-FOLDER SOURCE...      BUILD-FOLDER has the compile commands
Exit code 1: clang-tidy has complaints, or no target compiles one of the sources. Standard output says which.

Sources of one folder with the same options are read together, as one translation unit that includes them. This takes a
fraction of the time, because clang-tidy spends most time on the headers of the system. The sources of a unit with a
complaint are read once more, each alone.

If a source has no complaint, the script makes an empty file in BUILD-FOLDER/passed. The file's name is a hash of the
compile command, clang-tidy's version and settings, the source, and each header of the project that the source can
include. Headers of the system aren't part of the hash.
"""
import collections
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
MOST_TOGETHER = 16
ROOT = pathlib.Path(__file__).resolve().parents[2]
INCLUDE = re.compile(rb'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)', re.MULTILINE)


@functools.cache
def content(path):
    return path.read_bytes()


@functools.cache
def found(path):
    return path.is_file()


def project_files(source, folders):
    """Returns the source and all project files that it can include, whatever the conditions of its #if are."""
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


def options(entry):
    """Returns the options of the compile command that determine how the source is read, without the source and the
    target."""
    words = shlex.split(entry["command"])
    words = words[words.index(next(word for word in words if word.startswith("-"))):]
    target = words.index("-o")
    return tuple(word for word in words[:target] + words[target + 2:] if word not in ("-c", entry["file"]))


def batches(entries):
    """Returns groups of sources that can be read together."""
    alike = collections.defaultdict(list)
    for entry in entries:
        alike[os.path.dirname(entry["file"]), options(entry)].append(entry)
    return [group[at:at + MOST_TOGETHER] for group in alike.values() for at in range(0, len(group), MOST_TOGETHER)]


def joined(build, batch):
    """Writes a file that includes the sources, and returns its path."""
    name = hashlib.sha256("\n".join(entry["file"] for entry in batch).encode()).hexdigest()
    path = pathlib.Path(build, "together", name + ".cpp").absolute()
    path.parent.mkdir(exist_ok=True)
    path.write_text("".join(f'#include "{entry["file"]}"\n' for entry in batch))
    return path


def is_clean_together(build, batch):
    words = [TIDY, "--quiet", "--checks=-bugprone-suspicious-include", r"--header-filter=(src|platform|tools)/.*\.(h|cpp)$",
             joined(build, batch), "--", *options(batch[0])]
    return subprocess.run(words, capture_output=True, check=False, cwd=batch[0]["directory"]).returncode == 0


def may_have_unused_name(source):
    """Returns whether the source may declare a name (by using or as an alias of a namespace) that it doesn't use.
    clang-tidy finds such names only in the main file, and in a joined unit the source isn't the main file."""
    text = re.sub(r"//.*", "", pathlib.Path(source).read_text())
    names = re.findall(r"^\s*using (?:\w+::)+(\w+);", text, re.MULTILINE) + re.findall(r"^\s*namespace (\w+) = ", text, re.MULTILINE)
    return any(len(re.findall(rf"\b{name}\b", text)) == 1 for name in names)


def complaints(build, batch):
    """Returns for each source of the batch clang-tidy's complaints, or an empty text."""
    found = {}
    clean = len(batch) > 1 and is_clean_together(build, batch)
    for source in [entry["file"] for entry in batch]:
        run = None
        if not clean or may_have_unused_name(source):
            run = subprocess.run([TIDY, "-p", build, "--quiet", source], capture_output=True, text=True, check=False)
        found[source] = (run.stdout or run.stderr) if run and run.returncode else ""
    return found


SETTINGS = (ROOT / ".clang-tidy").read_bytes() + subprocess.run([TIDY, "--version"], capture_output=True, check=True).stdout


def main(build, *sources):
    wanted = {str(ROOT / source) for source in sources}
    passed = pathlib.Path(build, "passed")
    passed.mkdir(exist_ok=True)
    entries = json.loads(pathlib.Path(build, "compile_commands.json").read_text())
    marks = {entry["file"]: passed / state(entry) for entry in entries if entry["file"] in wanted}
    for missing in sorted(wanted - set(marks)):
        print(f"{missing}: no target compiles it")
    due = [entry for entry in entries if entry["file"] in marks and not marks[entry["file"]].exists()]
    failed = wanted != set(marks)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for said in pool.map(functools.partial(complaints, build), batches(due)):
            for source, text in said.items():
                if text:
                    failed = True
                    print(text)
                else:
                    marks[source].touch()
    print(f"clang-tidy read {len(due)} of {len(marks)} sources; the others and what they include are unchanged")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
