#!/usr/bin/python3
"""Whole jobs by the mouse alone, or by the keyboard alone, on a real desktop: items marked in the tree and backed up,
filter and options set, everything backed up, the device emptied and restored.

    trips_test.py BIN-FOLDER mouse|keyboard
Exit code 77: a tool is missing.
"""
import pathlib
import shutil
import subprocess
import sys

from desk import MAIN, Desk, Person, require_tools, wait_for
from hands import Keyboard, Mouse

CARD = "\\Storage Card"
SET = CARD + "\\QUILBOX\\QLBX000{}.QLT"
MARKED = "To do.txt"  # and the registry
FOLDERS = ["Files", "My Documents"]


class Device:
    def __init__(self, bin_folder, folder):
        self.bin, self.folder = bin_folder, folder
        self.store = folder / "object-store"

    def content(self):
        return {str(path.relative_to(self.store)): path.read_bytes()
                for path in self.store.rglob("*") if path.is_file()}

    def set_tool(self, what, number):
        path = self.folder / "cards" / "Storage Card" / "QUILBOX" / f"QLBX000{number}"
        return subprocess.run([self.bin / "quillbox-set", what, path], capture_output=True, text=True)

    def await_set(self, number):
        wait_for(f"set {number}", lambda: self.set_tool("verify", number).returncode == 0)

    def empty(self):
        """But for what lies in ROM and so is in no set."""
        for path in [*self.store.iterdir()]:
            if path.name != "Windows":
                shutil.rmtree(path) if path.is_dir() else path.unlink()


def refuse_a_filter(hands):
    title = "File filter"
    hands.menu(title, "File", "Filter...")
    hands.tick(title, "Hidden", "Show files newer than :")
    hands.date(title, "Show files newer than :")
    hands.press(title, "Cancel")


def set_options(hands):
    hands.menu("Options", "File", "Options...")
    hands.tick("Options", "Generate log file", "Replace existing files")
    hands.press("Options", "OK")


def back_up_two_files(hands, device):
    hands.mark(FOLDERS, MARKED)
    hands.menu("Backup selected Item", "Operations", "Backup", "Selected items...")
    hands.press("Backup selected Item", "OK")
    hands.row("Select", CARD)
    hands.press("Select", "OK")
    device.await_set(1)
    listed = device.set_tool("list", 1).stdout
    items = [line for line in listed.splitlines() if line.startswith(("file ", "database ", "registry "))]
    require(len(items) == 2 and MARKED in items[0] and items[1].startswith("registry "), listed)


def back_up_everything(hands, device):
    hands.tool("Full Backup", "Full backup")
    hands.tick("Full Backup", "All files", "All databases", "Registry")
    hands.press("Full Backup", "OK")
    hands.row("Select", CARD)
    hands.press("Select", "OK")
    hands.answer("Info?", "No")
    device.await_set(2)


def restore_everything(hands, person, device):
    hands.menu("Select", "Operations", "Restore", "Full...")
    hands.row("Select", SET.format(2))
    hands.press("Select", "OK")
    hands.press("Full Restore", "OK")
    # Each database that is still there is asked for; at the end stands what is to be done for the registry.
    while wait_for("a question", lambda: person.is_there("Warning") or person.is_there("Restore")).name == "Warning":
        hands.answer("Warning", "Yes")
    hands.answer("Restore", "OK")


def require(condition, fault):
    if not condition:
        raise SystemExit(fault)


def main(bin_folder, kind):
    require_tools()
    desk = Desk()
    device = Device(pathlib.Path(bin_folder), desk.base / "device")
    process = desk.start(f"{bin_folder}/quillbox", "--device", str(device.folder), stderr=None)
    person = Person(process)
    hands = {"mouse": Mouse, "keyboard": Keyboard}[kind](person)
    person.window(MAIN)
    before = device.content()
    refuse_a_filter(hands)
    set_options(hands)
    back_up_two_files(hands, device)
    back_up_everything(hands, device)
    device.empty()
    require(device.content() != before, "nothing was taken away")
    restore_everything(hands, person, device)
    person.window(MAIN)
    require(device.content() == before, "what came back differs")
    hands.leave()
    require(process.wait(300) == 0, "the program ended badly")


if __name__ == "__main__":
    main(*sys.argv[1:])
