"""Reads what a program's --help says: its commands, their arguments and options."""
import dataclasses
import re
import subprocess

COLUMN = 30  # where the texts of a list begin


@dataclasses.dataclass
class Entry:
    """An argument, an option or a command. `names` has more than one for -h,--help."""
    names: list
    value: str  # "NAME", "skip|replace"; empty for a flag
    text: str


@dataclasses.dataclass
class Command:
    words: list  # without the program: [] for itself, ["database", "export"]
    what: str
    usage: str
    footer: str
    arguments: list
    options: list
    commands: list  # of Command


def _entry(head, text):
    """The head is `--card NAME=DIR ...`, `--timeout SECONDS=60 Needs: --script` or `SET TEXT REQUIRED`."""
    head = head.strip()
    notes = []
    for mark, said in ((r" Needs: (\S+)", "Only with {}."), (r" Excludes: (\S+)", "Not with {}."), (r" REQUIRED", "Required."),
                       (r"(?: x \d+)? \.\.\.| x \d+", "")):
        found = re.search(mark, head)
        if found:
            head = head[:found.start()] + head[found.end():]
            notes.append(said.format(*found.groups()))
    names, _, value = head.partition(" ")
    value, default = re.fullmatch(r"(.*?)(?:=([\w.]+))?", value).groups()
    if default:
        if value == "NAME":  # NAME=DIR is a format
            value, default = f"{value}={default}", None
        else:
            notes.append(f"The default is {default}.")
    text = text.strip()
    text = text[:1].upper() + text[1:] + ("" if text.endswith((".", ":")) else ".")
    if not names.startswith("-"):
        notes = [note for note in notes if note != "Required."]  # the usage shows it
        value = ""  # only the type
    return Entry(names.split(","), value, " ".join(filter(None, [text, *notes])))


def _lists(lines):
    """The paragraphs under a title such as "Options:", by their titles, and the other paragraphs."""
    lists, others = {}, []
    for block in "\n".join(lines).split("\n\n"):
        rows = block.strip("\n").split("\n")
        if re.fullmatch(r"(Positionals|Options|Subcommands):", rows[0]):
            lists[rows[0][:-1]] = _joined(rows[1:])
        elif rows != [""]:
            others.append("\n".join(rows))
    return lists, others


def _joined(rows):
    """A row whose text is on the next line, as one row with a wide head."""
    joined = []
    for index, row in enumerate(rows):
        if row.startswith(" " * COLUMN):
            continue
        after = rows[index + 1] if index + 1 < len(rows) else ""
        if after.startswith(" " * COLUMN):
            joined.append((row, after))
        else:
            joined.append((row[:COLUMN], row[COLUMN:]))
    return joined


def read_help(program, words=()):
    said = subprocess.run([program, *words, "--help"], check=True, capture_output=True, text=True).stdout
    what, _, rest = said.partition("\nUsage: ")
    usage, *lines = rest.split("\n")
    lists, others = _lists(lines)
    entries = {title: [_entry(head, text) for head, text in lists.get(title, [])] for title in ("Positionals", "Options", "Subcommands")}
    return Command(list(words), what.strip(), usage, "\n\n".join(others), entries["Positionals"], entries["Options"],
                   [read_help(program, [*words, entry.names[0]]) for entry in entries["Subcommands"]])


def all_commands(command):
    yield command
    for below in command.commands:
        yield from all_commands(below)
