#!/usr/bin/python3
"""Whole jobs by the mouse alone, or by the keyboard alone, on a real desktop: items marked in the tree and backed up,
filter and options set, everything backed up, the device emptied and restored.

    whole_jobs_test.py BIN-FOLDER mouse|keyboard
Exit code 77: a tool is missing.
"""
import shutil
import sys

from desktop import MAIN, Desktop, output_of, require, require_tools, succeeds, wait_for
from steps import CARD, Keyboard, Mouse


def content(store):
    return {path.relative_to(store): path.read_bytes() for path in store.rglob("*") if path.is_file()}


def empty(store):
    """Deletes all files but those in ROM, which no set contains."""
    for path in [*store.iterdir()]:
        if path.name != "Windows":
            shutil.rmtree(path) if path.is_dir() else path.unlink()


def cancel_a_filter(steps):
    steps.menu("File filter", "File", "Filter...")
    steps.tick("File filter", "Hidden", "Show files newer than :")
    steps.press("File filter", "Cancel")


def set_options(steps):
    steps.menu("Options", "File", "Options...")
    steps.tick("Options", "Generate log file", "Replace existing files")
    steps.press("Options", "OK")


def back_up_two_items(steps, await_set):
    steps.mark(["Files", "My Documents"], "To do.txt")
    steps.menu("Backup selected Item", "Operations", "Backup", "Selected items...")
    steps.press("Backup selected Item", "OK")
    steps.choose(CARD)
    listed = await_set(1)
    items = [line for line in listed.splitlines() if line.startswith(("file ", "database ", "registry "))]
    require(len(items) == 2 and "To do.txt" in items[0] and items[1].startswith("registry "), listed)


def back_up_everything(steps, await_set):
    steps.full_backup(CARD, "All files", "All databases", "Registry")
    steps.answer("Info?", "No")
    await_set(2)


def restore_everything(steps, user):
    steps.menu("Select", "Operations", "Restore", "Full...")
    steps.choose(CARD + "\\QUILBOX\\QLBX0002.QLT")
    steps.press("Full Restore", "OK")
    # The program asks about each existing database. At the end it says what to do about the registry.
    while wait_for("a question", lambda: user.is_there("Warning") or user.is_there("Restore")).name == "Warning":
        steps.answer("Warning", "Yes")
    steps.answer("Restore", "OK")
    user.window(MAIN)


def main(bin_folder, kind):
    require_tools()
    desktop = Desktop(bin_folder)
    device = desktop.base / "device"
    store, tool = device / "object-store", desktop.bin / "quillbox-set"

    def await_set(number):
        path = device / "cards" / "Storage Card" / "QUILBOX" / f"QLBX000{number}"
        wait_for(f"set {number}", lambda: succeeds(tool, "verify", path))
        return output_of(tool, "list", path)
    user = desktop.start_program(device)
    steps = {"mouse": Mouse, "keyboard": Keyboard}[kind](user)
    user.window(MAIN)
    before = content(store)
    cancel_a_filter(steps)
    set_options(steps)
    back_up_two_items(steps, await_set)
    back_up_everything(steps, await_set)
    empty(store)
    require(content(store) != before, "nothing was removed")
    restore_everything(steps, user)
    require(content(store) == before, "the restored files differ")
    steps.leave()


if __name__ == "__main__":
    main(*sys.argv[1:])
