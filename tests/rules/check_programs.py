#!/usr/bin/env python3
"""Checks that no installed program contains the code that makes calls on the host fail, which can delete files.

    check_programs.py WITH_FAULTS PROGRAM...    WITH_FAULTS is a test that contains it
"""
import pathlib
import re
import subprocess
import sys

FAULTS = re.compile(r"platform::file::(setFaultPlan|undoUnflushed)\(")


def functions_of_faults(program):
    symbols = subprocess.run(["nm", "--demangle", program], check=True, capture_output=True, text=True).stdout
    return set(FAULTS.findall(symbols))


def main():
    with_faults, *programs = sys.argv[1:]
    if len(functions_of_faults(with_faults)) != 2 or not programs:
        sys.exit(f"{with_faults} doesn't contain the names that this check looks for")
    wrong = [pathlib.Path(program).name for program in programs if functions_of_faults(program)]
    if wrong:
        sys.exit(f"the code that makes calls on the host fail is part of {', '.join(wrong)}")


if __name__ == "__main__":
    main()
