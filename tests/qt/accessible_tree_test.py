#!/usr/bin/python3
"""Lists what a screen reader is told of the main window and its dialogs, and fails for a control without a name.

Runs itself under a fresh X server, window manager and session bus:  accessible_tree_test.py BIN-FOLDER
Exit code 77: a tool is missing.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

TOOLS = ["Xvfb", "xvfb-run", "openbox", "xdotool", "xprop", "dbus-run-session"]
# Containers that only hold others.
SILENT = {"filler", "panel", "viewport", "scroll pane", "scroll bar", "application", "layered pane", "separator"}
DIALOGS = [  # keys from the main window, title, what must be there: (role, name)
    ("F10 Down Return", "File filter", [("check box", "Show files newer than :"), ("push button", "Add"),
                                        ("check box", "Read-only"), ("push button", "OK"), ("push button", "Cancel")]),
    ("F10 Down Down Return", "Options", [("radio button", "Ask"), ("check box", "Generate log file"),
                                         ("text", "Maximum backup file size:"), ("push button", "OK")]),
    ("F10 Down Down Down Return", "Quillbox", [("push button", "OK"), ("push button", "Cancel")]),
    ("F10 Right Right Return", "Full Backup", [("check box", "All files"), ("text", "Backupset comments")]),
]
MAIN = [("push button", name) for name in ("Mark", "Unmark", "Full backup", "Filter", "Options")] + [
    ("menu item", "File"), ("menu item", "Operations")] + [
    ("table cell", name) for name in ("Databases", "Files", "Registry")]


def run_inside_a_session():
    missing = [tool for tool in TOOLS if not shutil.which(tool)]
    try:
        import pyatspi  # noqa: F401
    except ImportError:
        missing.append("python3-pyatspi")
    if missing:
        print("missing:", *missing, file=sys.stderr)
        return 77
    return subprocess.run(["dbus-run-session", "--", "xvfb-run", "-a", sys.executable, __file__, sys.argv[1],
                           "inside"]).returncode


def keys(text):
    subprocess.run(["xdotool", "key", "--delay", "60", *text.split()], check=True)


def wait_for(what, condition, seconds=30):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.1)
    raise SystemExit(f"no {what}")


class Tree:
    def __init__(self, program):
        import pyatspi
        self.showing = pyatspi.STATE_SHOWING
        self.desktop = pyatspi.Registry.getDesktop(0)
        self.faults = []
        self.application = wait_for("application", lambda: next(
            (a for a in self.desktop if a and a.get_process_id() == program), None))

    def window(self, title):
        return next((w for w in self.application if w and w.name == title), None)

    def walk(self, node, depth=0):
        """(role, name) of everything below that is on the screen, printed as a tree."""
        seen = []
        for child in node:
            if not child or not child.getState().contains(self.showing):
                continue
            role, name = child.getRoleName(), child.name
            print("  " * depth + f"{role}: {name!r}")
            if role not in SILENT and not name:
                self.faults.append(f"a {role} without a name in {node.name!r}")
            seen.append((role, name))
            seen += self.walk(child, depth + 1)
        return seen

    def check(self, title, expected):
        window = wait_for(f"window {title!r}", lambda: self.window(title))
        print(f"{window.getRoleName()}: {window.name!r}")
        seen = self.walk(window, 1)
        self.faults += [f"{title}: no {role} {name!r}" for role, name in expected if (role, name) not in seen]

    def find(self, node, name):
        for child in node:
            found = child and (child if child.name == name else self.find(child, name))
            if found:
                return found
        return None

    def check_mark(self):
        """The caret lands on the last item and marks it: that has to be heard, not only seen."""
        import pyatspi
        cell = self.find(self.window("KORV Quillbox"), "Registry")
        for said, checked in ("not marked", False), ("marked", True):
            wait_for(f"Registry {said!r}", lambda said=said, checked=checked: cell.description == said and
                     cell.getState().contains(pyatspi.STATE_CHECKED) == checked)
            keys("End")


def inside(program_file):
    with tempfile.TemporaryDirectory() as folder:
        base = pathlib.Path(folder)
        (base / "runtime").mkdir(mode=0o700)
        environment = dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb",
                           XDG_CONFIG_HOME=str(base / "config"), XDG_RUNTIME_DIR=str(base / "runtime"))
        manager = subprocess.Popen(["openbox"], stderr=subprocess.DEVNULL)
        wait_for("window manager", lambda: b"window id" in subprocess.run(
            ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], capture_output=True).stdout)
        program = subprocess.Popen([program_file, "--device", str(base / "device")], env=environment)
        try:
            tree = Tree(program.pid)
            tree.check("KORV Quillbox", MAIN)
            tree.check_mark()
            for path, title, expected in DIALOGS:
                keys(path)
                tree.check(title, expected)
                keys("Escape")
                wait_for(f"end of {title!r}", lambda title=title: not tree.window(title))
            keys("alt+F4")
            program.wait(30)
        finally:
            program.kill()
            manager.kill()
    print("\n".join(tree.faults))
    return 1 if tree.faults else 0


if __name__ == "__main__":
    sys.exit(inside(sys.argv[1] + "/quillbox") if sys.argv[2:] == ["inside"] else run_inside_a_session())
