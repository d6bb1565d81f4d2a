#!/usr/bin/python3
"""Takes pictures of the main window and every dialog, of the real program under a real X server with a window manager.

    take_screenshots.py BIN-FOLDER TARGET-FOLDER [VARIANT...]
Exit code 77: a tool is missing. 1: a window didn't appear.
"""
import collections
import os
import pathlib
import subprocess
import sys

from desktop import LOOKS_PER_SECOND, Desktop, require_tools, wait_for
from tour import tour


def colours(**parts):
    """Returns the settings of the session with the user's colours, as the toolkit reads them. Each part has a
    background and a text colour."""
    return "".join(f"[Colors:{part}]\nBackgroundNormal={ground}\nForegroundNormal={text}\n"
                   for part, (ground, text) in parts.items())


WHITE, BLACK, PALE = "255,255,255", "0,0,0", "252,252,252"
DARK = colours(Window=("42,46,50", PALE), Button=("49,54,59", PALE), Selection=("61,174,233", PALE), View=("27,30,32", PALE))
CONTRAST = colours(Window=(BLACK, WHITE), Button=(BLACK, WHITE), Selection=("255,255,0", BLACK), View=(BLACK, WHITE)) + \
    f"BackgroundAlternate={BLACK}\nForegroundInactive={BLACK}\n"
LARGE = "[General]\nfont=DejaVu Sans,18,-1,5,50,0,0,0,0,0\n"
VARIANTS = {  # size of the screen, scale, settings
    "light": ("600x540", 1, ""),
    "dark": ("600x540", 1, DARK),
    "contrast": ("600x540", 1, CONTRAST),
    "half": ("900x810", 1.5, ""),
    "double": ("1200x1080", 2, ""),
    "large": ("1000x900", 1, LARGE),
}


def wait_until_still(desktop, name):
    """Waits until some successive pictures are the same."""
    seen = collections.deque(maxlen=LOOKS_PER_SECOND // 8)

    def is_still():
        seen.append(desktop.picture.read_bytes())
        return len(seen) == seen.maxlen and len(set(seen)) == 1
    wait_for(f"a picture without movement: {name}", is_still)


def take_all(bin_folder, target, variant):
    size, scale, settings = VARIANTS[variant]
    desktop = Desktop(bin_folder, size)
    environment = dict(os.environ, QT_SCALE_FACTOR=str(scale))
    if settings:
        (desktop.base / "config").mkdir()
        (desktop.base / "config" / "kdeglobals").write_text(settings)
        environment.update(XDG_CURRENT_DESKTOP="KDE", KDE_SESSION_VERSION="5")

    def visit(name, _):
        wait_until_still(desktop, name)
        subprocess.run(["convert", f"xwd:{desktop.picture}", pathlib.Path(target) / f"{variant}-{name}.png"], check=True)
    tour(desktop.start_program(desktop.base / "device", scale=scale, env=environment), visit)
    return 0


def main(bin_folder, target, *variants):
    require_tools("convert")
    pathlib.Path(target).mkdir(parents=True, exist_ok=True)
    if len(variants) == 1:
        return take_all(bin_folder, target, *variants)
    # Each variant needs a desktop of its own.
    taking = [subprocess.Popen([sys.executable, __file__, bin_folder, target, each]) for each in variants or VARIANTS]
    return max(process.wait() for process in taking)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
