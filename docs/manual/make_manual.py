#!/usr/bin/env python3
"""Writes the manual pages: options from the programs' --help, everything else from the pages in docs/.

    make_manual.py BIN-FOLDER TARGET-FOLDER
"""
import pathlib
import re
import sys

from man_page import ManPage, add_markdown, bold, escaped, italic, spans
from program_help import all_commands, read_help

DOCS = pathlib.Path(__file__).resolve().parents[1]
RELEASE = re.search(r'<release version="[^"]+" date="([^"]+)"',
                    (DOCS.parent / "packaging/desktop/org.quillbox.Quillbox.metainfo.xml.in").read_text())[1]
VERSION = re.search(r"project\(Quillbox VERSION (\S+)", (DOCS.parent / "CMakeLists.txt").read_text())[1]

# Program: its purpose, the pages whose sections follow the options, the sections left out, and its files.
PROGRAMS = {
    "quillbox": ("back up and restore a handheld device", ("commands.md",), (), {
        "~/.local/share/quillbox/device": "The device, if no other is named.",
        "~/.config/quillbox/NAME.toml": "The profile NAME."}),
    "quillbox-set": ("list, check, search and unpack sets of quillbox", ("archive.md", "salvage.md"), ("covered",), {
        "QUILBOX/QLBX0001.QLT, QUILBOX/QLBX0001.QDT": "The list and the data of set 1 on a card.",
        "QUILBOX/QLBX0001.SUM": "Their checksums, if the set is sealed."}),
    "quillbox-device": ("show and change devices of quillbox", ("forms.md",), (), {
        "DEVICE/object-store": "The files of the device.", "DEVICE/device.db": "Its databases and its registry.",
        "DEVICE/cards": "A folder for each card that the device has itself."}),
    "quillbox-mount": ("show sets of quillbox as folders", ("mount.md",), (), {
        "QUILBOX/QLBX0001.QLT, QUILBOX/QLBX0001.QDT": "The list and the data of set 1 on a card."}),
}
FORMATS = {"quillbox-script": ("scripts of quillbox", "script.md"), "quillbox-set": ("sets of quillbox, and their formats", "format.md")}
PAGES = [("quillbox", 1), ("quillbox-device", 1), ("quillbox-mount", 1), ("quillbox-set", 1), ("quillbox-script", 5), ("quillbox-set", 5)]


def head(name, section, what):
    return ManPage(name, section, what, VERSION, RELEASE)


def end(page, name, section):
    page.section("See also")
    page.paragraph(",\n".join(f"{bold(other)}({number})" for other, number in PAGES if (other, number) != (name, section)))
    return page.text()


def intro(page, text):
    """The paragraph below the title says what the page is for. Its first sentence names its readers."""
    page.section("Description")
    page.paragraph(spans(" ".join(text.split("\n\n")[1].split())))


def usage_of(command):
    words = command.usage.split(" ")
    return " ".join(bold(word) if not re.match(r"[\[A-Z]", word) else italic(word) for word in words)


def add_entries(page, entries):
    for entry in entries:
        tag = ", ".join(map(bold, entry.names)) if entry.names[0].startswith("-") else italic(entry.names[0])
        page.item(tag + (f" {italic(entry.value)}" if entry.value else ""), spans(entry.text))


def add_command(page, command):
    page.subsection(" ".join(command.words))
    page.paragraph(usage_of(command))
    page.paragraph(spans(command.what[0].upper() + command.what[1:] + "."))
    add_entries(page, command.arguments + [option for option in command.options if "--help" not in option.names])
    if command.footer:
        page.paragraph(spans(command.footer))


def program_page(name, program):
    what, sources, skipped, files = PROGRAMS[name]
    page = head(name, 1, what)
    page.section("Synopsis")
    for command in [program, *program.commands]:
        page.paragraph(usage_of(command))
    page.section("Description")
    page.paragraph(spans(program.what.split("\nExit code")[0].replace("\n", " ")))
    page.section("Options")
    add_entries(page, program.arguments + program.options)
    if program.commands:
        page.section("Commands")
    for command in list(all_commands(program))[1:]:
        if not command.commands:
            add_command(page, command)
    for source in sources:
        add_markdown(page, (DOCS / source).read_text(), skipped)
    if "Exit code" in program.what:
        page.section("Exit status")
        page.paragraph(spans(program.what.split("\n")[1]))
    page.section("Files")
    for path, said in files.items():
        page.item(bold(path), escaped(said))
    page.section("Examples")
    examples = (DOCS / "examples.md").read_text()
    add_examples(page, examples[examples.index(f"\n## {name}\n"):].split("\n## ")[1])
    return end(page, name, 1)


def add_examples(page, text):
    for block in text.split("\n\n")[1:]:
        if block.startswith("    "):
            page.code([line[4:] for line in block.split("\n")])
        else:
            page.paragraph(spans(block))


def format_page(name):
    what, source = FORMATS[name]
    text = (DOCS / source).read_text()
    page = head(name, 5, what)
    intro(page, text)
    add_markdown(page, text)
    return end(page, name, 5)


def main(folder, target):
    target = pathlib.Path(target)
    target.mkdir(parents=True, exist_ok=True)
    for name in PROGRAMS:
        (target / f"{name}.1").write_text(program_page(name, read_help(pathlib.Path(folder) / name)))
    for name in FORMATS:
        (target / f"{name}.5").write_text(format_page(name))


if __name__ == "__main__":
    main(*sys.argv[1:])
