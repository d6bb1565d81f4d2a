#!/usr/bin/python3
"""What Orca says to a user who starts the program for the first time, marks files, backs up and restores.

    spoken_job_test.py BIN-FOLDER
Exit code 77: a tool is missing.
"""
import sys
import time

from desktop import MAIN, Desktop, require_tools
from orca import Orca
from steps import Keyboard

# Each key, and the phrases that Orca says before the user presses the next key.
MARK = [
    ("f", "Files collapsed", "nothing marked"),
    ("Right", "Files expanded"),
    ("m", "My Documents collapsed", "folder, nothing marked"),
    ("Right", "My Documents expanded"),
    ("t", "To do.txt", "file, marked"),
    ("h", "Household 2025.csv", "file, marked"),
    ("l", "Letters collapsed"),
    ("Right", "Letters expanded"),
    ("Down", "Aunt Berta.txt", "file, marked"),
    ("space", "file, not marked"),
    ("space", "file, marked"),
]
BACK_UP = [
    ("ctrl+b", "Full Backup dialog", "Backupset comments text"),
    ("Tab", "All files check box not checked"),
    ("space", "checked"),
    ("Return", "Select dialog", "List with 2 items"),
    ("Down", "\\Storage Card"),
    ("Return", "Set 1 on \\Storage Card: 2"),
]
RESTORE = [
    ("ctrl+shift+r", "Select dialog", "List with 1 item"),
    ("Down", "\\Storage Card\\QUILBOX\\QLBX0001.QLT"),
    ("Return", "Restore selection dialog"),
    ("Tab", "Select items to restore"),
    ("Down", "File:"),
    ("space", "selected"),
    ("Return", "alert Warning"),
    ("y", "Restored from set 1 on \\Storage Card: 1 file in"),
]


def main(bin_folder):
    require_tools("orca")
    desktop = Desktop(bin_folder)
    orca = Orca(desktop)
    user = desktop.start_program(desktop.base / "device")
    user.window(MAIN)
    for phrase in "To begin, mark items in the tree", MAIN, "Items on the device tree", "Databases collapsed":
        orca.says(phrase)
    for key, *phrases in MARK + BACK_UP + RESTORE:
        if len(key) == 1:
            time.sleep(1.1)  # the tree combines letters within a second to one name
        user.keys(key)
        for phrase in phrases:
            orca.says(phrase)
    print(orca.spoken.read_text())
    Keyboard(user).leave()


if __name__ == "__main__":
    main(*sys.argv[1:])
