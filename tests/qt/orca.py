"""Orca, the screen reader, on the desktop of a test. Orca writes its phrases to a file instead of speaking them."""
import shutil

from desktop import TimedOut, require, wait_for

# Orca reads this file at its start. Other desktops on this host can run an Orca, too.
CUSTOMIZATIONS = """
import sys
import orca.settings
import orca.speech

spoken = open({!r}, "w", buffering=1)
orca.speech.init = lambda: None
orca.speech._speak = lambda text, *_: print(text, file=spoken)
orca.speech.speakCharacter = orca.speech.speakKeyEvent = lambda *_: None
orca.settings.enableKeyEcho = False
sys.modules["__main__"].otherOrcas = lambda: []
"""


class Orca:
    def __init__(self, desktop):
        preferences, self.spoken = desktop.base / "orca", desktop.base / "spoken"
        preferences.mkdir()
        (preferences / "orca-customizations.py").write_text(CUSTOMIZATIONS.format(str(self.spoken)))
        process = desktop.start("/usr/bin/env", "LC_ALL=C.UTF-8", f"XDG_DATA_HOME={desktop.base}", shutil.which("orca"),
                                "--user-prefs", str(preferences))
        self.heard = 0
        wait_for("Orca", lambda: process.poll() is not None or self.said())
        require(process.poll() is None, f"Orca ended with {process.returncode}")

    def said(self):
        """Returns what Orca has said since the last phrase for which says() waited."""
        return self.spoken.read_text().splitlines()[self.heard:] if self.spoken.exists() else []

    def says(self, phrase):
        """Waits until Orca says something that begins with the phrase."""
        def found():
            return next((at for at, text in enumerate(self.said(), 1) if text.startswith(phrase)), None)
        try:
            self.heard += wait_for(f"{phrase!r}", found)
        except TimedOut:
            raise SystemExit(f"Orca doesn't say {phrase!r}, but {self.said()}") from None
