"""A person at a desktop of its own: an X server, a window manager, a session bus, and eyes and hands on them.

The eyes are a screen reader's (AT-SPI), the hands xdotool's. Nothing waits for a length of time: each step waits
for what it needs to see.
"""
import atexit
import collections
import contextlib
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

TOOLS = ["Xvfb", "openbox", "xdotool", "xprop", "xwininfo", "dbus-daemon"]
MISSING = 77  # exit code
ROWS = {"list item", "table cell"}  # their list has the keyboard, not they
MAIN = "KORV Quillbox"
LOOKS = 50  # in a second


def require_tools(*more):
    """Ends the test as skipped where a tool is missing."""
    missing = [tool for tool in [*TOOLS, *more] if not shutil.which(tool)]
    try:
        import pyatspi  # noqa: F401
    except ImportError:
        missing.append("python3-pyatspi")
    if missing:
        print("missing:", *missing, file=sys.stderr)
        sys.exit(MISSING)


class InVain(SystemExit):
    pass


def wait_for(what, condition, seconds=60):
    """The condition's first true value. Looks are counted, not time: a host that stood still hasn't looked."""
    from gi.repository import GLib
    for _ in range(seconds * LOOKS):
        while GLib.MainContext.default().iteration(False):
            pass
        with contextlib.suppress(GLib.Error, NotImplementedError):  # what it asks about has just gone
            if found := condition():
                return found
        time.sleep(1 / LOOKS)
    raise InVain(f"in vain: {what}")


def xdotool(*words):
    return subprocess.run(["xdotool", *map(str, words)], capture_output=True, text=True).stdout.strip()


class Desk:
    """One for each process: what AT-SPI connects to is settled for good by the environment."""

    def __init__(self, size="1000x800"):
        self.base = pathlib.Path(tempfile.mkdtemp(prefix="quillbox-desk-"))
        atexit.register(self.clear_away)
        signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
        self.started = []
        (self.base / "runtime").mkdir(mode=0o700)
        for name in ("WAYLAND_DISPLAY", "QT_STYLE_OVERRIDE", "QT_SCALE_FACTOR", "DBUS_SESSION_BUS_ADDRESS"):
            os.environ.pop(name, None)
        os.environ.update(QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb", NO_AT_BRIDGE="0",
                          XDG_CONFIG_HOME=str(self.base / "config"), XDG_RUNTIME_DIR=str(self.base / "runtime"))
        self.display = os.environ["DISPLAY"] = ":" + self.answer_of(
            # A number of its own: two servers that look for a free one at the same time can find the same. And no reset
            # when its only client leaves: who is just coming would be thrown out.
            "Xvfb", f":{100 + os.getpid() % 50000}", "-screen", "0", f"{size}x24", "-nolisten", "tcp", "-noreset",
            "-displayfd", "{}")
        self.server = self.started[-1]
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = self.answer_of(
            "dbus-daemon", "--session", "--nofork", "--print-address={}")
        # A window that comes before its manager gets no frame and no keyboard.
        manager = self.start("openbox")
        wait_for("a window manager", lambda: manager.poll() is not None or "window id" in subprocess.run(
            ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], capture_output=True, text=True).stdout)
        if manager.poll() is not None:
            raise SystemExit(f"openbox on {self.display} ended with {manager.poll()}")

    def start(self, *words, **options):
        process = subprocess.Popen(words, **{"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, **options})
        self.started.append(process)
        return process

    def answer_of(self, *words):
        """Starts what writes one line to the descriptor that stands for {}."""
        reader, writer = os.pipe()
        self.start(*[word.format(writer) for word in words], pass_fds=[writer])
        os.close(writer)
        with os.fdopen(reader) as answer:
            return answer.readline().strip()

    def clear_away(self):
        for process in reversed(self.started):
            process.kill()
            process.wait()
        shutil.rmtree(self.base, ignore_errors=True)


Place = collections.namedtuple("Place", "x y width height")


class Person:
    """Works with one program, on a screen with so many pixels to each of its own."""

    def __init__(self, process, scale=1):
        import pyatspi
        from gi.repository import Atspi
        # Else a program that doesn't answer for a second has no states and no names.
        Atspi.set_timeout(60000, 60000)
        self.process = process
        self.scale = scale
        self.atspi = pyatspi
        desktop = pyatspi.Registry.getDesktop(0)
        self.application = wait_for("the program on the desktop", lambda: next(
            (a for a in desktop if a and a.get_process_id() == process.pid), None))

    # What there is to see.

    def shows(self, node):
        return node.getState().contains(self.atspi.STATE_SHOWING)

    def is_there(self, title):
        return next((w for w in self.application if w and w.name == title and self.shows(w)), None)

    def window(self, title):
        """Once it stands where it will stay, and has the keyboard."""
        def settled():
            window = self.is_there(title)
            active = window and xdotool("getactivewindow")
            if not active or xdotool("getwindowname", active) != title:
                return None
            told = subprocess.run(["xwininfo", "-id", active], capture_output=True, text=True).stdout
            seen = self.place(window)
            place = [int(number) for number in re.findall(r"Absolute upper-left [XY]: +(-?\d+)", told)]
            stands = len(place) == 2 and max(abs(place[0] - seen.x), abs(place[1] - seen.y)) < 2 * self.scale
            return window if stands else None
        return wait_for(f"the window {title!r}", settled)

    def x_windows(self):
        return set(xdotool("search", "--onlyvisible", "--pid", self.process.pid).split())

    def search(self, node, name, role=None, starts=False):
        for child in node:
            if not child:
                continue
            fits = child.name.startswith(name) if starts else child.name == name
            if fits and role in (None, child.getRoleName()) and self.shows(child):
                return child
            found = self.search(child, name, role, starts)
            if found:
                return found
        return None

    def find(self, title, name, role=None, starts=False, seconds=60):
        """Something in the window, by what it is called or by the start of that."""
        return wait_for(f"{name!r} in {title!r}",
                        lambda: self.search(self.is_there(title) or [], name, role, starts), seconds)

    def place(self, node):
        seen = node.queryComponent().getExtents(self.atspi.DESKTOP_COORDS)
        return Place(*(round(side * self.scale) for side in (seen.x, seen.y, seen.width, seen.height)))

    def has(self, node, state):
        return node.getState().contains(getattr(self.atspi, "STATE_" + state))

    def focused(self, title):
        """The control of the window that has the keyboard."""
        def search(node):
            for child in node:
                if child and self.has(child, "FOCUSED") and child.getRoleName() not in ROWS:
                    return child
                found = child and search(child)
                if found:
                    return found
            return None
        return search(self.window(title))

    def any_focused(self, title):
        """For a moment none has it, while it goes from one to another."""
        return wait_for(f"the keyboard in {title!r}", lambda: self.focused(title))

    # What there is to do.

    def click_at(self, x, y):
        xdotool("mousemove", x, y, "click", 1)

    def click_on(self, node):
        """Check boxes are wider than their text: near the left edge is always inside."""
        place = self.place(node)
        self.click_at(place.x + min(8, place.width // 2), place.y + place.height // 2)

    def click(self, title, name, role=None):
        self.window(title)
        self.click_on(self.find(title, name, role))

    def keys(self, *names):
        xdotool("key", "--delay", 15, *names)

    def type(self, text):
        xdotool("type", "--delay", 15, text)

    def pause(self):
        """What is typed within a second belongs to one name."""
        time.sleep(1.1)

    def tab_to(self, title, name=None, role=None):
        """Round the window once at most."""
        def is_meant(node):
            return node and name in (None, node.name) and role in (None, node.getRoleName())
        for _ in range(30):
            before = self.focused(title)
            if is_meant(before):
                return
            self.until(f"Tab to leave {before and before.name!r}", lambda: self.keys("Tab"),
                       lambda: self.focused(title) != before)
        raise SystemExit(f"Tab never comes to {name or role!r} in {title!r}")

    def until(self, what, act, condition):
        """While the program still works it drops what it is told: then once more."""
        act()
        for _ in range(5):
            with contextlib.suppress(InVain):
                return wait_for(what, condition, 10)
            act()
        return wait_for(what, condition)

    def sets(self, title, name, state, act):
        """Does what brings a control into a state."""
        self.until(f"{name!r} {state.lower()}", act, lambda: self.has(self.find(title, name), state))

    def opens(self, title, act):
        """Does what opens a window."""
        self.until(title, act, lambda: self.is_there(title))
        return self.window(title)

    def ends(self, title, act):
        """Does what ends the window. Another one of that title may follow."""
        window = self.window(title)
        self.until(f"the end of {title!r}", act,
                   lambda: not any(w == window and self.shows(w) for w in self.application if w))

    def leaves(self, act):
        """Does what ends the program."""
        self.window(MAIN)
        self.until("the end of the program", lambda: self.process.poll() is None and act(),
                   lambda: self.process.poll() is not None)
