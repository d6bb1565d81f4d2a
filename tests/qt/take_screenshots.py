#!/usr/bin/python3
"""Takes pictures of the main window and every dialog as a person sees them: the real program under a real X server
with a window manager.

    take_screenshots.py BIN-FOLDER TARGET-FOLDER [VARIANT...]      variants: light dark half double large
Exit code 77: a tool is missing. 1: a window didn't come.
"""
import os
import pathlib
import subprocess
import sys

from desk import MAIN, Desk, InVain, Person, require_tools, wait_for
from hands import Keyboard, Mouse

# A session's settings that say which colours and font the user likes, as the toolkit reads them.
DARK = """[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252
[Colors:View]
BackgroundNormal=27,30,32
BackgroundAlternate=35,38,41
ForegroundNormal=252,252,252
ForegroundInactive=161,169,177
ForegroundLink=29,153,243
ForegroundVisited=155,89,182
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252
[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
"""
LARGE = "[General]\nfont=DejaVu Sans,18,-1,5,50,0,0,0,0,0\n"
VARIANTS = {  # size of the screen, scale, settings
    "light": ("600x540", 1, None),
    "dark": ("600x540", 1, DARK),
    "half": ("900x810", 1.5, None),
    "double": ("1200x1080", 2, None),
    "large": ("1000x900", 1, LARGE),
}
# Enough of them that a run lasts until its picture is taken.
LETTERS = 4000


class Pictures:
    def __init__(self, folder, variant):
        self.folder, self.variant = folder, variant

    def take(self, name):
        """Once two in a row show the same."""
        last = None

        def stands():
            nonlocal last
            before, last = last, subprocess.run(["import", "-window", "root", "rgb:-"], capture_output=True).stdout
            return last == before
        wait_for(f"a picture that stands still: {name}", stands)
        self.take_at_once(name)

    def take_at_once(self, name):
        subprocess.run(["import", "-window", "root", self.folder / f"{self.variant}-{name}.png"], check=True)


def take_the_tree(person, pictures):
    """Everything that has a picture of its own: marked and not, in ROM, and folders with and without a mark."""
    mouse = Mouse(person)
    for name in "Files", "Windows", "My Documents", "Databases":
        mouse.expand(name)
    for name in "Contacts Database", "To do.txt", "Household 2025.csv":
        mouse.mark_row(name)
    pictures.take("1-tree")
    mouse.on_row("Databases", -8)


def take_the_dialogs(person, pictures):
    hands = Keyboard(person)
    person.keys("alt+f")
    pictures.take("2-menu")
    person.keys("Escape", "Escape")
    for name, item, title in ("3-about", "About...", "Quillbox"), ("4-options", "Options...", "Options"), \
            ("5-filter", "Filter...", "File filter"):
        hands.menu(title, "File", item)
        pictures.take(name)
        if title == "File filter":
            hands.tick(title, "Show files newer than :", "Show only files with these extentions :")
            person.type("txt")
            pictures.take("5-filter-on")
        person.ends(title, lambda: person.keys("Escape"))


def take_a_backup(person, pictures):
    hands = Keyboard(person)
    hands.tool("Full Backup", "Full backup")
    person.type("Before the journey")
    hands.tick("Full Backup", "All files", "All databases", "Registry")
    pictures.take("6-full-backup")
    hands.press("Full Backup", "OK")
    person.window("Select")
    pictures.take("7-chooser")
    person.opens("Error", lambda: person.keys("Return"))
    pictures.take("8-message")
    hands.answer("Error", "OK")
    hands.row("Select", "\\Storage Card")
    pictures.take("9-chooser-chosen")
    hands.press("Select", "OK")
    try:
        person.find("Backuping Files", "File: \\Documents\\letter-", starts=True, seconds=10)
        pictures.take_at_once("10-progress")
    except InVain:
        print("the backup was over before its picture was taken")


def take_the_questions(person, pictures):
    hands = Keyboard(person)
    hands.tool("Full Backup", "Full backup")
    hands.tick("Full Backup", "All databases")
    hands.press("Full Backup", "OK")
    hands.row("Select", "\\Storage Card")
    hands.press("Select", "OK")
    person.window("Info?")
    pictures.take("11-question")
    hands.answer("Info?", "No")
    for name, item, title in ("12-partial-restore", "Partial...", "Restore selection"), \
            ("13-full-restore", "Full...", "Full Restore"):
        hands.menu("Select", "Operations", "Restore", item)
        hands.row("Select", "\\Storage Card\\QUILBOX\\QLBX0001.QLT")
        hands.press("Select", "OK")
        person.window(title)
        if item == "Partial...":
            person.tab_to(title, role="list")
            person.keys("Down", "space", "Down", "Down", "space")
        pictures.take(name)
        person.ends(title, lambda: person.keys("Escape"))


def take_all(bin_folder, target, variant):
    size, scale, settings = VARIANTS[variant]
    desk = Desk(size)
    environment = dict(os.environ, QT_SCALE_FACTOR=str(scale))
    if settings:
        (desk.base / "config").mkdir()
        (desk.base / "config" / "kdeglobals").write_text(settings)
        environment.update(XDG_CURRENT_DESKTOP="KDE", KDE_SESSION_VERSION="5")
    documents = desk.base / "documents"
    documents.mkdir()
    for number in range(LETTERS):
        (documents / f"letter-{number:04d}").write_bytes(os.urandom(20000))
    process = desk.start(f"{bin_folder}/quillbox", "--device", str(desk.base / "device"),
                         "--folder", f"Documents={documents}", env=environment, stderr=None)
    person = Person(process, scale)
    pictures = Pictures(target, variant)
    person.window(MAIN)
    pictures.take("1-main")
    take_the_tree(person, pictures)
    take_the_dialogs(person, pictures)
    take_a_backup(person, pictures)
    take_the_questions(person, pictures)
    Keyboard(person).leave()
    if process.wait(300) != 0:
        raise SystemExit(f"the program ended with {process.returncode}")


def main(bin_folder, target, *variants):
    require_tools("import")
    target = pathlib.Path(target)
    target.mkdir(parents=True, exist_ok=True)
    if len(variants) == 1:
        take_all(bin_folder, target, variants[0])
        print(f"{variants[0]}: {len(list(target.glob(variants[0] + '-*.png')))} pictures in {target}")
        return 0
    # Each on a desktop of its own.
    taking = [subprocess.Popen([sys.executable, __file__, bin_folder, target, variant])
              for variant in variants or VARIANTS]
    return max(process.wait() for process in taking)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
