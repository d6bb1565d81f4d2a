#!/usr/bin/env python3
"""Writes the completions for bash, zsh and fish from the programs' --help.

    make_completions.py BIN-FOLDER TARGET-FOLDER BASH-FOLDER

BASH-FOLDER is where the completions for bash are installed: those for zsh and fish use them.
"""
import pathlib
import re
import sys

from program_help import all_commands, read_help

HERE = pathlib.Path(__file__).parent
# The kind of value where its name alone doesn't say it.
KINDS = {"--profile": "PROFILE", "--item": "ITEM", "--replace": "NUMBER", "--device": "DEVICE", "--set": "DIR"}
PROGRAMS = {"quillbox": {}, "quillbox-set": {("extract", "NAME"): "ITEM", ("prune", "STORAGE"): "DIR", ("explain", "STORAGE"): "DIR"}, "quillbox-device": {}, "quillbox-mount": {}}


def rows_of(program, command):
    words = " ".join(command.words)
    for below in command.commands:
        yield words, below.words[-1], "COMMAND", below.what.split("\n")[0]
    for number, argument in enumerate(command.arguments, 1):
        name = argument.names[0]
        many = re.search(rf"\b{name}\.\.\.", command.usage) is not None
        yield words, f"{number}{'+' if many else ''}", PROGRAMS[program].get((words, name), name), ""
    for option in command.options:
        for name in option.names:
            yield words, name, KINDS.get(name, option.value), option.text


def main(folder, target, installed):
    target = pathlib.Path(target)
    for program in PROGRAMS:
        rows = [row for command in all_commands(read_help(pathlib.Path(folder) / program)) for row in rows_of(program, command)]
        values = {"program": program, "name": program.replace("-", "_"), "rows": "\n".join("\t".join(row) for row in rows),
                  "file": f"{installed}/{program}", "global": "1" if program == "quillbox" else "0"}
        for shell, name in (("bash", program), ("zsh", f"_{program}"), ("fish", f"{program}.fish")):
            text = (HERE / f"completion.{shell}").read_text()
            (target / shell).mkdir(parents=True, exist_ok=True)
            (target / shell / name).write_text(re.sub(r"@(\w+)@", lambda found: values[found[1]], text))


if __name__ == "__main__":
    main(*sys.argv[1:])
