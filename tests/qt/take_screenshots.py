#!/usr/bin/python3
"""Takes pictures of the main window and every dialog, of the real program under a real X server with a window manager.

    take_screenshots.py BIN-FOLDER TARGET-FOLDER [VARIANT...]      variants: light dark half double large
Exit code 77: a tool is missing. 1: a window didn't appear.
"""
import os
import pathlib
import subprocess
import sys

from desktop import Desktop, TimedOut, require_tools, wait_for
from tour import tour

# The session's settings with the colours and the font of the user, as the toolkit reads them.
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
# So many that a run lasts until its picture is taken.
LETTERS = 4000


class Photographer:
    def __init__(self, user, folder, variant):
        self.user, self.folder, self.variant = user, folder, variant

    def visit(self, name, title):
        if name == "10-progress":
            self.take_progress(name)
        else:
            self.wait_until_still(name)
            self.take(name)

    def take_progress(self, name):
        try:
            self.user.find("Backuping Files", "File: \\Documents\\letter-", starts=True, seconds=10)
            self.take(name)
        except TimedOut:
            print("the backup was over before its picture was taken")

    def wait_until_still(self, name):
        """Until two pictures in a row are the same."""
        last = None

        def is_still():
            nonlocal last
            before, last = last, subprocess.run(["import", "-window", "root", "rgb:-"], capture_output=True).stdout
            return last == before
        wait_for(f"a picture without movement: {name}", is_still)

    def take(self, name):
        subprocess.run(["import", "-window", "root", self.folder / f"{self.variant}-{name}.png"], check=True)


def take_all(bin_folder, target, variant):
    size, scale, settings = VARIANTS[variant]
    desktop = Desktop(bin_folder, size)
    environment = dict(os.environ, QT_SCALE_FACTOR=str(scale))
    if settings:
        (desktop.base / "config").mkdir()
        (desktop.base / "config" / "kdeglobals").write_text(settings)
        environment.update(XDG_CURRENT_DESKTOP="KDE", KDE_SESSION_VERSION="5")
    documents = desktop.base / "documents"
    documents.mkdir()
    for number in range(LETTERS):
        (documents / f"letter-{number:04d}").write_bytes(os.urandom(20000))
    user = desktop.start_program(desktop.base / "device", "--folder", f"Documents={documents}", scale=scale,
                                 env=environment)
    tour(user, Photographer(user, target, variant).visit)
    print(f"{variant}: {len(list(target.glob(variant + '-*.png')))} pictures in {target}")


def main(bin_folder, target, *variants):
    require_tools("import")
    target = pathlib.Path(target)
    target.mkdir(parents=True, exist_ok=True)
    if len(variants) == 1:
        take_all(bin_folder, target, variants[0])
        return 0
    # Each needs a desktop of its own.
    taking = [subprocess.Popen([sys.executable, __file__, bin_folder, target, variant])
              for variant in variants or VARIANTS]
    return max(process.wait() for process in taking)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
