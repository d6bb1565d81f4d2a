"""A desktop for one test (X server, window manager, session bus), and a user who works with one program on it.

The user reads the screen through AT-SPI, asks the X server about windows, and sends input with xdotool. Each step waits
for what it needs to see.
"""
import atexit
import collections
import contextlib
import importlib.util
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

TOOLS = ["Xvfb", "openbox", "xdotool", "dbus-daemon"]
MISSING = 77  # exit code
ROWS = {"list item", "table cell"}  # roles of rows: their list has the focus
MAIN = "KORV Quillbox"
LOOKS_PER_SECOND = 50

Rectangle = collections.namedtuple("Rectangle", "x y width height")


def require_tools(*more):
    """Ends the test as skipped if a tool is missing."""
    missing = [tool for tool in [*TOOLS, *more] if not shutil.which(tool)]
    missing += [f"python3-{module.lower()}" for module in ("pyatspi", "Xlib") if not importlib.util.find_spec(module)]
    if missing:
        print("missing:", *missing, file=sys.stderr)
        sys.exit(MISSING)


def require(condition, fault):
    if not condition:
        raise SystemExit(fault)


class TimedOut(SystemExit):
    pass


def wait_for(what, condition, seconds=60):
    """Returns the condition's first true value. The limit is a number of checks and not a time, so it still holds if
    the host stops for a while."""
    from gi.repository import GLib
    for _ in range(seconds * LOOKS_PER_SECOND):
        while GLib.MainContext.default().iteration(False):
            pass
        with contextlib.suppress(GLib.Error, NotImplementedError):  # the object has just disappeared
            if found := condition():
                return found
        time.sleep(1 / LOOKS_PER_SECOND)
    raise TimedOut(f"timed out: {what}")


def output_of(*words):
    return subprocess.run(list(map(str, words)), capture_output=True, text=True).stdout.strip()


def succeeds(*words):
    return subprocess.run(list(map(str, words)), capture_output=True).returncode == 0


def xdotool(*words):
    return output_of("xdotool", *words)


class Desktop:
    """A process can have only one Desktop, because AT-SPI chooses its bus once, by the environment."""

    def __init__(self, bin_folder, size="1000x800"):
        self.bin = pathlib.Path(bin_folder)
        # Thousands of files are made and deleted much faster in memory than on a disk.
        in_memory = os.access("/dev/shm", os.W_OK) and shutil.disk_usage("/dev/shm").free > 2 << 30
        self.base = pathlib.Path(tempfile.mkdtemp(prefix="quillbox-desktop-", dir="/dev/shm" if in_memory else None))
        atexit.register(self.clear_away)
        signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
        self.started = []
        (self.base / "runtime").mkdir(mode=0o700)
        for name in ("WAYLAND_DISPLAY", "QT_STYLE_OVERRIDE", "QT_SCALE_FACTOR", "DBUS_SESSION_BUS_ADDRESS"):
            os.environ.pop(name, None)
        os.environ.update(QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb", NO_AT_BRIDGE="0",
                          XDG_CONFIG_HOME=str(self.base / "config"), XDG_RUNTIME_DIR=str(self.base / "runtime"))
        # The number of the display is given, because two servers that search for a free number can find the same one.
        # -noreset: the server doesn't reset when its only client disconnects. During a reset it would refuse a client
        # that is just connecting.
        self.display = os.environ["DISPLAY"] = ":" + self.answer_of(
            "Xvfb", f":{100 + os.getpid() % 50000}", "-screen", "0", f"{size}x24", "-nolisten", "tcp", "-noreset",
            "-fbdir", str(self.base), "-displayfd", "{}")
        self.server = self.started[-1]
        from Xlib import display
        self.x = display.Display(self.display)
        self.picture = self.base / "Xvfb_screen0"  # what the screen shows now, in the format of xwd
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = self.answer_of(
            "dbus-daemon", "--session", "--nofork", "--print-address={}")
        # A window that appears before the window manager gets no frame and no focus.
        manager = self.start("openbox")
        wait_for("a window manager", lambda: manager.poll() is not None or self.window_in("_NET_SUPPORTING_WM_CHECK"))
        require(manager.poll() is None, f"openbox on {self.display} ended with {manager.returncode}")

    def start(self, *words, **options):
        process = subprocess.Popen(words, **{"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, **options})
        self.started.append(process)
        return process

    def start_program(self, device, *options, scale=1, **process_options):
        return User(self, self.start(self.bin / "quillbox", "--device", device, *options,
                                     **{"stderr": None, **process_options}), scale)

    def window_in(self, name):
        """Returns the window that this property of the root window names, or None."""
        from Xlib import X
        found = self.x.screen().root.get_full_property(self.x.intern_atom(name), X.AnyPropertyType)
        return self.x.create_resource_object("window", found.value[0]) if found and found.value[0] else None

    def active_window(self):
        """Returns the title of the active window, and the position of its content on the screen. The title is None if no
        window is active."""
        from Xlib import error
        window = self.window_in("_NET_ACTIVE_WINDOW")
        with contextlib.suppress(error.BadWindow):  # the window has just disappeared
            if window:
                at = self.x.screen().root.translate_coords(window, 0, 0)
                return window.get_full_text_property(self.x.intern_atom("_NET_WM_NAME")), (at.x, at.y)
        return None, None

    def answer_of(self, *words):
        """Starts a program that writes one line to the descriptor in place of {}. Returns this line."""
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


class User:
    """A user of one program. `scale` is the number of screen pixels for one pixel of the program."""

    def __init__(self, desktop, process, scale):
        import pyatspi
        from gi.repository import Atspi
        # With the default timeout of one second, AT-SPI would report no states and no names for a busy program.
        Atspi.set_timeout(60000, 60000)
        self.desktop, self.process, self.scale, self.atspi = desktop, process, scale, pyatspi
        applications = pyatspi.Registry.getDesktop(0)
        self.application = wait_for("the program on the desktop", lambda: next(
            (a for a in applications if a and a.get_process_id() == process.pid), None))

    # Reading.

    def has(self, node, state):
        return node.getState().contains(getattr(self.atspi, "STATE_" + state))

    def shows(self, node):
        return self.has(node, "SHOWING")

    def rectangle(self, node):
        seen = node.queryComponent().getExtents(self.atspi.DESKTOP_COORDS)
        return Rectangle(*(round(side * self.scale) for side in (seen.x, seen.y, seen.width, seen.height)))

    def is_there(self, title):
        return next((w for w in self.application if w and w.name == title and self.shows(w)), None)

    def window(self, title):
        """Returns the window as soon as it has its final position and the focus."""
        def settled():
            active, at = self.desktop.active_window()
            window = self.is_there(title) if active == title else None
            if not window:
                return None
            seen = self.rectangle(window)
            return window if max(abs(at[0] - seen.x), abs(at[1] - seen.y)) < 2 * self.scale else None
        return wait_for(f"the window {title!r}", settled)

    def search(self, node, fits):
        """Returns the first fitting node below `node`, depth first."""
        for child in node or []:
            if child and (found := child if fits(child) else self.search(child, fits)):
                return found
        return None

    def find(self, title, name, role=None, starts=False, seconds=60):
        """Returns a visible object in the window by its name, or by the beginning of its name if `starts` is set."""
        def fits(node):
            same = node.name.startswith(name) if starts else node.name == name
            return same and role in (None, node.getRoleName()) and self.shows(node)
        return wait_for(f"{name!r} in {title!r}", lambda: self.search(self.is_there(title), fits), seconds)

    def focused(self, title):
        """Returns the control that has the focus, or None: at times no control has it."""
        return self.search(self.window(title),
                           lambda node: self.has(node, "FOCUSED") and node.getRoleName() not in ROWS)

    def await_focus(self, title):
        return wait_for(f"the focus in {title!r}", lambda: self.focused(title))

    # Input.

    def click_at(self, x, y):
        xdotool("mousemove", x, y, "click", 1)

    def click_on(self, node):
        """Check boxes are wider than their text: a point near the left edge is always inside."""
        at = self.rectangle(node)
        self.click_at(at.x + min(8, at.width // 2), at.y + at.height // 2)

    def click(self, title, name, role=None):
        self.window(title)
        self.click_on(self.find(title, name, role))

    def keys(self, *names):
        xdotool("key", "--delay", 15, *names)

    def type(self, text):
        xdotool("type", "--delay", 15, text)

    def tab_to(self, title, name=None, role=None):
        for _ in range(30):
            before = self.focused(title)
            if before and name in (None, before.name) and role in (None, before.getRoleName()):
                return
            self.until(f"Tab to leave {before and before.name!r}", lambda: self.keys("Tab"),
                       lambda: self.focused(title) != before)
        raise SystemExit(f"Tab never reaches {name or role!r} in {title!r}")

    # Input with its result.

    def until(self, what, act, condition):
        """Repeats the input, because the program drops input while it works."""
        act()
        for _ in range(5):
            with contextlib.suppress(TimedOut):
                return wait_for(what, condition, 10)
            act()
        return wait_for(what, condition)

    def sets(self, title, name, state, act):
        """Repeats the input until the control has the state."""
        self.until(f"{name!r} {state.lower()}", act, lambda: self.has(self.find(title, name), state))

    def opens(self, title, act):
        """Repeats the input until the window is open."""
        self.until(title, act, lambda: self.is_there(title))
        return self.window(title)

    def ends(self, title, act):
        """Repeats the input until the window is closed. Another window with this title may follow."""
        window = self.window(title)
        self.until(f"the end of {title!r}", act,
                   lambda: not any(w == window and self.shows(w) for w in self.application if w))

    def escape(self, title):
        self.ends(title, lambda: self.keys("Escape"))

    def ends_program(self, act):
        self.window(MAIN)
        self.until("the end of the program", lambda: self.process.poll() is None and act(),
                   lambda: self.process.poll() is not None)
        require(self.process.returncode == 0, f"the program ended with {self.process.returncode}")
