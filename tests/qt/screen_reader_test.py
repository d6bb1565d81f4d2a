#!/usr/bin/python3
"""The main window and every dialog for a screen reader: each control has a name, and marks and the focus are reported.

    screen_reader_test.py BIN-FOLDER
Exit code 77: a tool is missing.
"""
import sys

from desktop import MAIN, Desktop, require, require_tools, wait_for
from steps import Keyboard
from tour import tour

# Roles of containers that need no name, because they have no meaning.
SILENT = {"filler", "panel", "viewport", "scroll pane", "scroll bar", "application", "layered pane", "separator"}
CAPTION = [("push button", "OK"), ("push button", "Cancel")]
COMMENTS = ("text", "Backupset comments")
# The objects that a step of the tour must show, as (role, name). The key is the name of the step.
EXPECTED = {
    "1-main": [("push button", name) for name in ("Mark", "Unmark", "Full backup", "Filter", "Options")] + [
        ("menu item", "File"), ("menu item", "Operations"), ("tree", "Items on the device")] + [
        ("table cell", name) for name in ("Databases", "Files", "Registry")],
    "3-about": CAPTION,
    "4-options": CAPTION + [("radio button", "Ask"), ("check box", "Generate log file"),
                            ("text", "Maximum backup file size:")],
    "5-filter": CAPTION + [("check box", "Show files newer than :"), ("push button", "Add"),
                           ("spin button", "Show files newer than :"), ("check box", "Read-only"),
                           ("list", "Extensions"), ("text", "New extension")],
    "6-selected-backup": CAPTION + [COMMENTS, ("list", "Items to backup:"),
                                    ("list item", "File:\\My Documents\\Household 2025.csv")],
    "6-full-backup": CAPTION + [COMMENTS, ("check box", "All files")],
    "7-chooser": CAPTION + [("list", "Select your storage"), ("list item", "\\Storage Card"),
                            ("list item", "Main device")],
    "8-message": [("push button", "OK"), ("label", "You must select an item")],
    "10-question": [("push button", "Yes"), ("push button", "No"),
                    ("label", "Override \\Storage Card\\QUILBOX\\QLBX0001.QLT file")],
    "11-partial-restore": CAPTION + [COMMENTS, ("list", "Select items to restore"),
                                     ("list item", "File:\\My Documents\\Household 2025.csv")],
    "12-full-restore": CAPTION + [COMMENTS],
}


GROUPS = {"4-options": ("Ask", "Restore options"), "5-filter": ("Read-only", "Hide files with these attributes")}


class Reader:
    def __init__(self, user):
        self.user = user
        self.faults = []

    def read(self, node, depth=0):
        """Returns (role, name) of each visible object below `node`, and prints them as a tree."""
        seen = []
        for child in node:
            if not child or not self.user.shows(child):
                continue
            role, name = child.getRoleName(), child.name
            print("  " * depth + f"{role}: {name!r}")
            if role not in SILENT and not name:
                self.faults.append(f"a {role} without a name in {node.name!r}")
            seen.append((role, name))
            seen += self.read(child, depth + 1)
        return seen

    def visit(self, name, title):
        if name in EXPECTED:
            seen = self.read(self.user.window(title))
            self.faults += [f"{name}: no {role} {text!r}" for role, text in EXPECTED[name] if (role, text) not in seen]
        if name in GROUPS:
            button, group = GROUPS[name]
            wait_for(f"the group of {button!r}", lambda: self.user.find(title, button).description == group)
        if name == "1-main":
            self.check_mark("Files", "nothing marked")
            self.check_toggles("Registry", ("marked", ["CHECKED"]), ("not marked", []))
        if name == "1-tree":
            self.check_mark("Files", "some marked", "INDETERMINATE")
            self.check_mark("My Documents", "folder, some marked", "INDETERMINATE")
            self.check_toggles("To do.txt", ("file, not marked", []), ("file, marked", ["CHECKED"]))
        if name == "10-question":  # the question is over a progress window, which is checked here
            self.faults += [f"progress: a {child.getRoleName()} without a name"
                            for window in self.user.application if window and window.name == "Backuping Files"
                            for child in window[0]
                            if self.user.shows(child) and not child.name and child.getRoleName() != "label"]
            self.user.find("Backuping Files", "Backuping Files", "progress bar")

    def check_mark(self, name, words, *states):
        item = self.user.find(MAIN, name)
        wait_for(f"{name!r}: {words!r} {states}", lambda: item.description == words and
                 [state for state in ("CHECKED", "INDETERMINATE") if self.user.has(item, state)] == list(states))

    def check_toggles(self, name, *results):
        for words, states in results:
            self.user.find(MAIN, name).queryAction().doAction(0)
            self.check_mark(name, words, *states)


def check_focus(user):
    """The program moves the focus, then the screen reader does, and then Tab moves it on from there."""
    title, keyboard = "File filter", Keyboard(user)
    keyboard.menu(title, "File", "Filter...")
    keyboard.tick(title, "Show only files with these extentions :")
    wait_for("the focus in the edit", lambda: user.await_focus(title).getRoleName() == "text")
    user.find(title, "System").queryComponent().grabFocus()
    wait_for("the focus at System", lambda: user.await_focus(title).name == "System")
    user.keys("Tab")
    wait_for("the focus after System", lambda: user.await_focus(title).name == "Read-only")
    user.escape(title)


def check_tree(user):
    """A screen reader reads an item when it gets the focus, and again when it is expanded or collapsed."""
    read = []
    user.atspi.Registry.registerEventListener(
        lambda event: read.append((event.source.name, user.has(event.source, "EXPANDED"))) if event.detail1 else None,
        "object:state-changed:focused")
    user.tab_to(MAIN, "Items on the device")
    user.until("the focus at Files", lambda: user.keys("Home", "f"), lambda: any(name == "Files" for name, _ in read))
    is_expanded = read[-1][1]
    for key, expanded in sorted([("Left", False), ("Right", True)], reverse=not is_expanded):
        read.clear()
        user.until(f"Files after {key}", lambda key=key: user.keys(key),
                   lambda expanded=expanded: ("Files", expanded) in read)
    read.clear()
    user.keys("Tab", "shift+Tab")
    wait_for("Files when the tree gets the focus", lambda: ("Files", is_expanded) in read)


def main(bin_folder):
    require_tools()
    desktop = Desktop(bin_folder)
    user = desktop.start_program(desktop.base / "device")
    reader = Reader(user)
    check_focus(user)
    check_tree(user)
    tour(user, reader.visit)
    require(not reader.faults, "\n".join(reader.faults))


if __name__ == "__main__":
    main(*sys.argv[1:])
