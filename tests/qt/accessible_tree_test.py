#!/usr/bin/python3
"""What a screen reader is told of the main window and every dialog: a control without a name, a mark or a focus that
can't be heard is a fault.

    accessible_tree_test.py BIN-FOLDER
Exit code 77: a tool is missing.
"""
import sys

from desk import MAIN, Desk, Person, require_tools, wait_for
from hands import Keyboard, Mouse

# Containers that only hold others.
SILENT = {"filler", "panel", "viewport", "scroll pane", "scroll bar", "application", "layered pane", "separator"}
# What must be there: (role, name).
MAIN_CONTROLS = [("push button", name) for name in ("Mark", "Unmark", "Full backup", "Filter", "Options")] + [
    ("menu item", "File"), ("menu item", "Operations"), ("tree", "Tree View Control")] + [
    ("table cell", name) for name in ("Databases", "Files", "Registry")]
CAPTION = [("push button", "OK"), ("push button", "Cancel")]
FILE_DIALOGS = [
    ("Filter...", "File filter", [("check box", "Show files newer than :"), ("push button", "Add"),
                                  ("spin button", "Show files newer than :"), ("check box", "Read-only")]),
    ("Options...", "Options", [("radio button", "Ask"), ("check box", "Generate log file"),
                               ("text", "Maximum backup file size:")]),
    ("About...", "Quillbox", [])]
SELECTED = [("text", "Backupset comments"), ("list", "Items to backup:"), ("list item", "File:\\My Documents\\To do.txt")]
CHOOSER = [("list", "Select your storage"), ("list item", "\\Storage Card"), ("list item", "Main device")]
QUESTION = [("push button", "Yes"), ("push button", "No"),
            ("label", "Override \\Storage Card\\QUILBOX\\QLBX0001.QLT file")]
RESTORE = [("text", "Backupset comments"), ("list", "Select items to restore"), ("list item", "Registry")]


class Listener:
    def __init__(self, person):
        self.person = person
        self.faults = []

    def walk(self, node, depth=0):
        """(role, name) of everything below that is on the screen, printed as a tree."""
        seen = []
        for child in node:
            if not child or not self.person.shows(child):
                continue
            role, name = child.getRoleName(), child.name
            print("  " * depth + f"{role}: {name!r}")
            if role not in SILENT and not name:
                self.faults.append(f"a {role} without a name in {node.name!r}")
            seen.append((role, name))
            seen += self.walk(child, depth + 1)
        return seen

    def check(self, title, expected):
        window = self.person.window(title)
        print(f"{window.getRoleName()}: {window.name!r}")
        seen = self.walk(window, 1)
        self.faults += [f"{title}: no {role} {name!r}" for role, name in expected if (role, name) not in seen]


def check_marks(person, mouse):
    """The state and the words of an item, and what its folders make of it."""
    def says(name, words, *states):
        item = person.find(MAIN, name)
        wait_for(f"{name!r}: {words!r} {states}", lambda: item.description == words and
                 [state for state in ("CHECKED", "INDETERMINATE") if person.has(item, state)] == list(states))
        return item
    says("Registry", "not marked")
    says("Files", "nothing marked")
    mouse.mark(["Files", "My Documents"], "To do.txt")
    says("Registry", "marked", "CHECKED")
    says("My Documents", "folder, some marked", "INDETERMINATE")
    says("Files", "some marked", "INDETERMINATE")
    says("To do.txt", "file, marked", "CHECKED").queryAction().doAction(0)
    says("To do.txt", "file, not marked")
    says("My Documents", "folder, nothing marked")
    says("Files", "nothing marked")
    says("To do.txt", "file, not marked").queryAction().doAction(0)
    says("To do.txt", "file, marked", "CHECKED")
    says("My Documents", "folder, some marked", "INDETERMINATE")


def check_focus(person, keyboard):
    """Where the program moves the keyboard, and where the screen reader wants it."""
    title = "File filter"
    keyboard.menu(title, "File", "Filter...")
    keyboard.tick(title, "Show only files with these extentions :")
    wait_for("the keyboard in the edit", lambda: person.any_focused(title).getRoleName() == "text")
    person.find(title, "System").queryComponent().grabFocus()
    wait_for("the keyboard at System", lambda: person.any_focused(title).name == "System")
    person.keys("Tab")
    wait_for("Tab from there", lambda: person.any_focused(title).name == "Read-only")
    person.ends(title, lambda: person.keys("Escape"))


def main(bin_folder):
    require_tools()
    desk = Desk()
    process = desk.start(f"{bin_folder}/quillbox", "--device", str(desk.base / "device"), stderr=None)
    person = Person(process)
    keyboard, mouse = Keyboard(person), Mouse(person)
    listener = Listener(person)
    listener.check(MAIN, MAIN_CONTROLS)
    for item, title, expected in FILE_DIALOGS:
        keyboard.menu(title, "File", item)
        listener.check(title, expected + CAPTION)
        person.ends(title, lambda: person.keys("Escape"))
    check_focus(person, keyboard)
    check_marks(person, mouse)
    keyboard.menu("Backup selected Item", "Operations", "Backup", "Selected items...")
    listener.check("Backup selected Item", SELECTED + CAPTION)
    keyboard.press("Backup selected Item", "OK")
    listener.check("Select", CHOOSER + CAPTION)
    person.opens("Error", lambda: person.keys("Return"))
    listener.check("Error", [("push button", "OK"), ("label", "You must select an item")])
    keyboard.answer("Error", "OK")
    keyboard.row("Select", "\\Storage Card")
    keyboard.press("Select", "OK")
    keyboard.tool("Full Backup", "Full backup")
    listener.check("Full Backup", [("check box", "All files"), ("text", "Backupset comments")] + CAPTION)
    keyboard.tick("Full Backup", "Registry")
    keyboard.press("Full Backup", "OK")
    keyboard.row("Select", "\\Storage Card")
    keyboard.press("Select", "OK")
    listener.check("Info?", QUESTION)
    listener.faults += [f"progress: a {child.getRoleName()} without a name"
                        for window in person.application if window and window.name == "Backuping Files"
                        for child in window[0] if person.shows(child) and not child.name]
    keyboard.answer("Info?", "No")
    keyboard.menu("Select", "Operations", "Restore", "Partial...")
    keyboard.row("Select", "\\Storage Card\\QUILBOX\\QLBX0002.QLT")
    keyboard.press("Select", "OK")
    listener.check("Restore selection", RESTORE + CAPTION)
    person.ends("Restore selection", lambda: person.keys("Escape"))
    keyboard.leave()
    process.wait(300)
    print("\n".join(listener.faults))
    return 1 if listener.faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
