"""How a person does the steps of a job: by the mouse alone, or by the keyboard alone. Both have the same steps."""
from desk import MAIN, wait_for, xdotool


class Mouse:
    """Every step by clicks."""

    def __init__(self, person):
        self.person = person

    def menu(self, title, *path):
        def walk():
            self.person.window(MAIN)
            for text in path:
                self.person.click_on(self.person.find(MAIN, text, "menu item"))
        self.person.opens(title, walk)

    def tool(self, title, name):
        self.person.opens(title, lambda: self.person.click(MAIN, name, "push button"))

    def leave(self):
        def walk():
            self.person.click_on(self.person.find(MAIN, "File", "menu item"))
            self.person.click_on(self.person.find(MAIN, "Exit", "menu item"))
        self.person.leaves(walk)

    def mark(self, folders, name):
        """The registry, and an item in the innermost folder."""
        self.person.window(MAIN)
        self.mark_row("Registry")
        for folder in folders:
            self.expand(folder)
        self.mark_row(name)

    def expand(self, name):
        if not self.person.has(self.person.find(MAIN, name, "table cell"), "EXPANDED"):
            self.person.sets(MAIN, name, "EXPANDED", lambda: self.on_row(name, -8))

    def mark_row(self, name):
        self.person.sets(MAIN, name, "CHECKED", lambda: self.on_row(name, 20))

    def on_row(self, name, x):
        """A click so far right of where the row's picture begins, for a font of usual size."""
        row = self.person.place(self.person.find(MAIN, name, "table cell"))
        self.person.click_at(row.x + x * row.height // 17, row.y + row.height // 2)

    def press(self, title, name):
        self.person.ends(title, lambda: self.person.click(title, name, "push button"))

    answer = press

    def row(self, title, text):
        self.person.sets(title, text, "SELECTED", lambda: self.person.click(title, text))

    def tick(self, title, *names):
        for name in names:
            self.person.sets(title, name, "CHECKED", lambda name=name: self.person.click(title, name))

    def date(self, title, label):
        """The calendar opens at the arrow; a day near its middle is a click. It tells screen readers nothing."""
        before = self.person.x_windows()
        date = self.person.place(self.person.find(title, label, "spin button"))
        self.person.click_at(date.x + date.width - 8, date.y + date.height // 2)
        calendar = wait_for("the calendar", lambda: self.person.x_windows() - before).pop()
        xdotool("mousemove", "--window", calendar, 80, 80, "click", 1)
        wait_for("the end of the calendar", lambda: self.person.x_windows() == before)


class Keyboard:
    """Every step by keys."""

    def __init__(self, person):
        self.person = person

    def menu(self, title, *path):
        def walk():
            self.person.window(MAIN)
            self.person.keys("alt+" + path[0][0].lower(), *[text[0].lower() for text in path[1:]])
        self.person.opens(title, walk)

    def tool(self, title, name):
        def walk():
            self.person.window(MAIN)
            self.person.tab_to(MAIN, name)
            self.person.keys("space")
        self.person.opens(title, walk)

    def leave(self):
        self.person.leaves(lambda: self.person.keys("alt+f", "e"))

    def mark(self, folders, name):
        """The registry, and an item in the innermost folder."""
        self.person.window(MAIN)
        self.person.tab_to(MAIN, "Tree View Control")
        self.person.sets(MAIN, "Registry", "CHECKED", lambda: self.person.keys("End"))
        # A caret that lands on a file marks it, so letters lead there: they pass nothing on the way.
        for folder in folders:
            self.lead_to(folder, "SELECTED")
            self.person.sets(MAIN, folder, "EXPANDED", lambda: self.person.keys("Right"))
        self.lead_to(name, "CHECKED")

    def lead_to(self, name, state):
        """By its first letter alone: a host that stands still between two of them makes two searches of it."""
        def type_on():
            self.person.pause()
            self.person.type(name[0].lower())
        self.person.find(MAIN, name)
        self.person.sets(MAIN, name, state, type_on)

    def press(self, title, name):
        self.person.window(title)
        self.person.tab_to(title, name)
        self.person.ends(title, lambda: self.person.keys("Return"))

    def answer(self, title, name):
        self.person.ends(title, lambda: self.person.keys(name[0].lower()))

    def row(self, title, text):
        self.person.window(title)
        self.person.tab_to(title, role="list")
        rows = self.person.any_focused(title)

        def selected():
            return next((row.name for row in rows if self.person.has(row, "SELECTED")), None)
        key = "Home"
        while selected() != text:
            before = selected()
            self.person.until("another row", lambda key=key: self.person.keys(key),
                              lambda before=before: selected() != before)
            key = "Down"

    def tick(self, title, *names):
        for name in names:
            self.person.window(title)
            if self.person.find(title, name).getRoleName() == "radio button":
                self.choose(title, name)
                continue
            self.person.tab_to(title, name)
            if not self.person.has(self.person.find(title, name), "CHECKED"):
                self.person.sets(title, name, "CHECKED", lambda: self.person.keys("space"))

    def choose(self, title, name):
        """Tab leads to the group, arrows lead on in it."""
        self.person.tab_to(title, role="radio button")
        while (before := self.person.any_focused(title)).name != name:
            self.person.until("another radio button", lambda: self.person.keys("Up"),
                              lambda before=before: self.person.focused(title) != before)
        wait_for(f"{name!r} checked", lambda: self.person.has(self.person.find(title, name), "CHECKED"))

    def date(self, title, label):
        self.person.window(title)
        self.person.tab_to(title, label, "spin button")
        self.person.keys("Up")
