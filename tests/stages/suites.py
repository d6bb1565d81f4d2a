#!/usr/bin/env python3
"""Runs those suites (tests of CTest) of a build whose result may have changed since they last passed.

    suites.py BUILD-FOLDER [CTEST OPTION...]      the options choose among the suites, as -L and -E do
Exit code: that of ctest.

A suite that passed runs again when its command, its environment variables, one of the programs that it uses, or one of
the files that it reads has changed. A compiled suite uses its own program. A script uses the programs that its command
names. If it names none, the script uses those in the folder that tests/CMakeLists.txt made for it, or otherwise all
programs and libraries of the build. A script reads all scripts below tests/. A suite also reads the files and folders of
the repository that its command names, and those that its property REQUIRED_FILES names.
"""
import functools
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCRIPTS = sorted((ROOT / "tests").rglob("*.py"))


@functools.cache
def digest(path):
    return hashlib.sha256(path.read_bytes()).digest()


def files_in(folder):
    return sorted(path for path in folder.rglob("*") if path.is_file())


def own_programs(build, properties):
    """Returns the programs of a script that has a folder of programs of its own."""
    settings = [line.partition("=") for p in properties if p["name"] == "ENVIRONMENT" for line in p["value"]]
    folders = [pathlib.Path(value) for name, _, value in settings if name == "QUILLBOX_BIN"]
    return [program for folder in folders if folder != build / "bin" for program in files_in(folder)]


def inputs(build, words, properties):
    named = [pathlib.Path(word) for word in words if word.startswith("/")]
    required = [pathlib.Path(file) for p in properties if p["name"] == "REQUIRED_FILES" for file in p["value"]]
    programs = [path for path in named if build in path.parents and path.is_file()]
    programs = programs or own_programs(build, properties)
    if not programs:
        programs = files_in(build / "bin") + files_in(build / "lib")
    scripts = SCRIPTS if any(path.suffix == ".py" for path in named) else []
    read = [path for path in named if ROOT in path.parents and build not in path.parents] + required
    return programs + scripts + [file for path in read for file in (files_in(path) if path.is_dir() else [path]) if file.exists()]


def state(build, suite):
    properties = [p for p in suite["properties"] if p["name"] in ("ENVIRONMENT", "SKIP_RETURN_CODE", "WILL_FAIL", "PASS_REGULAR_EXPRESSION",
                                                                      "FAIL_REGULAR_EXPRESSION")]
    settings = sorted(pair for pair in os.environ.items() if pair[0].startswith("QUILLBOX_") or pair[0].endswith("SAN_OPTIONS"))
    known = hashlib.sha256(json.dumps([suite["command"], properties, settings]).encode())
    for path in inputs(build, suite["command"], suite["properties"]):
        known.update(str(path).encode() + b"\0" + digest(path))
    return known.hexdigest()


def main(folder, *options):
    build = pathlib.Path(folder).resolve()
    ctest = ["ctest", "--test-dir", str(build), *options]
    listed = json.loads(subprocess.run([*ctest, "--show-only=json-v1"], capture_output=True, check=True).stdout)
    states = {suite["name"]: state(build, suite) for suite in listed["tests"]}
    record = build / "passed-suites.json"
    passed = json.loads(record.read_text()) if record.exists() else {}
    due = [name for name, now in states.items() if passed.get(name) != now]
    print(f"{len(due)} of {len(states)} suites to run: the others passed and nothing that they use has changed", flush=True)
    if not due:
        return 0

    # Many suites wait for windows and disks, so a few more run at once than there are processors.
    report = build / "suites.xml"
    report.unlink(missing_ok=True)
    chosen = "^(" + "|".join(map(re.escape, due)) + ")$"
    ended = subprocess.run([*ctest, "-R", chosen, "--output-on-failure", f"-j{os.cpu_count() + 2}", "--output-junit", report])
    for case in xml.etree.ElementTree.parse(report).iter("testcase"):
        passed.pop(case.get("name"), None)
        if case.get("status") == "run":
            passed[case.get("name")] = states[case.get("name")]
    record.write_text(json.dumps(passed, indent=1))
    return ended.returncode


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
