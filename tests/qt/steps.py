"""The steps of a job, by the mouse alone or by the keyboard alone."""
import time

from desktop import MAIN, wait_for

CARD = "\\Storage Card"


class Steps:
    """The steps that are the same with mouse and keyboard."""

    def __init__(self, user):
        self.user = user

    def choose(self, row):
        self.row("Select", row)
        self.press("Select", "OK")

    def full_backup(self, storage, *parts):
        self.tool("Full Backup", "Full backup")
        self.tick("Full Backup", *parts)
        self.press("Full Backup", "OK")
        self.choose(storage)


class Mouse(Steps):
    def menu(self, title, *path):
        self.user.opens(title, lambda: self.click_menu(*path))

    def click_menu(self, *path):
        self.user.window(MAIN)
        for text in path:
            self.user.click_on(self.user.find(MAIN, text, "menu item"))

    def tool(self, title, name):
        self.user.opens(title, lambda: self.user.click(MAIN, name, "push button"))

    def leave(self):
        self.user.ends_program(lambda: self.click_menu("File", "Exit"))

    def mark(self, folders, name):
        """Marks the registry, and an item in the innermost folder."""
        self.user.window(MAIN)
        self.mark_row("Registry")
        for folder in folders:
            self.expand(folder)
        self.mark_row(name)

    def expand(self, name):
        if not self.user.has(self.user.find(MAIN, name, "table cell"), "EXPANDED"):
            self.user.sets(MAIN, name, "EXPANDED", lambda: self.click_row(name, -8))

    def mark_row(self, name):
        self.user.sets(MAIN, name, "CHECKED", lambda: self.click_row(name, 20))

    def click_row(self, name, x):
        """`x` is the distance from the left edge of the row's picture, in pixels at a font of usual size."""
        row = self.user.rectangle(self.user.find(MAIN, name, "table cell"))
        self.user.click_at(row.x + x * row.height // 17, row.y + row.height // 2)

    def press(self, title, name):
        self.user.ends(title, lambda: self.user.click(title, name, "push button"))

    answer = press

    def row(self, title, text):
        self.user.sets(title, text, "SELECTED", lambda: self.user.click(title, text))

    def tick(self, title, *names):
        for name in names:
            self.user.sets(title, name, "CHECKED", lambda name=name: self.user.click(title, name))


class Keyboard(Steps):
    def menu(self, title, *path):
        def press():
            self.user.window(MAIN)
            self.user.keys("alt+" + path[0][0].lower(), *[text[0].lower() for text in path[1:]])
        self.user.opens(title, press)

    def tool(self, title, name):
        def press():
            self.user.window(MAIN)
            self.user.tab_to(MAIN, name)
            self.user.keys("space")
        self.user.opens(title, press)

    def leave(self):
        self.user.ends_program(lambda: self.user.keys("alt+f", "e"))

    def mark(self, folders, name):
        """Marks the registry, and an item in the innermost folder. It moves by typed letters, because arrow keys would
        mark the files on the way."""
        self.user.window(MAIN)
        self.user.tab_to(MAIN, "Items on the device")
        self.user.sets(MAIN, "Registry", "CHECKED", lambda: self.user.keys("End"))
        for folder in folders:
            self.type_first_letter(folder, "SELECTED")
            self.user.sets(MAIN, folder, "EXPANDED", lambda: self.user.keys("Right"))
        self.type_first_letter(name, "CHECKED")

    def type_first_letter(self, name, state):
        def type_letter():
            time.sleep(1.1)  # the tree combines letters within a second to one name
            self.user.type(name[0].lower())
        self.user.find(MAIN, name)
        self.user.sets(MAIN, name, state, type_letter)

    def press(self, title, name):
        self.user.window(title)
        self.user.tab_to(title, name)
        self.user.ends(title, lambda: self.user.keys("Return"))

    def answer(self, title, name):
        self.user.ends(title, lambda: self.user.keys(name[0].lower()))

    def row(self, title, text):
        self.user.window(title)
        self.user.tab_to(title, role="list")
        rows = self.user.await_focus(title)

        def selected():
            return next((row.name for row in rows if self.user.has(row, "SELECTED")), None)
        key = "Home"
        while (before := selected()) != text:
            self.user.until("another row", lambda key=key: self.user.keys(key),
                            lambda before=before: selected() != before)
            key = "Down"

    def tick(self, title, *names):
        for name in names:
            self.user.window(title)
            if self.user.find(title, name).getRoleName() == "radio button":
                self.tick_radio_button(title, name)
                continue
            self.user.tab_to(title, name)
            if not self.user.has(self.user.find(title, name), "CHECKED"):
                self.user.sets(title, name, "CHECKED", lambda: self.user.keys("space"))

    def tick_radio_button(self, title, name):
        """Tab reaches the group, and arrows move in it."""
        self.user.tab_to(title, role="radio button")
        while (before := self.user.await_focus(title)).name != name:
            self.user.until("another radio button", lambda: self.user.keys("Up"),
                            lambda before=before: self.user.focused(title) != before)
        wait_for(f"{name!r} checked", lambda: self.user.has(self.user.find(title, name), "CHECKED"))
