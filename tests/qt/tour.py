"""Opens every window of the program, by keyboard."""
from desktop import MAIN
from steps import CARD, Keyboard, Mouse

MARKED = ["Contacts Database", "To do.txt", "Household 2025.csv"]


def tour(user, visit):
    """Calls visit(name, title) for each window, and for some states of a window."""
    user.window(MAIN)
    visit("1-main", MAIN)
    mark_some_items(user, visit)
    open_menu_and_dialogs(user, visit)
    back_up(user, visit)
    restore(user, visit)
    Keyboard(user).leave()


def mark_some_items(user, visit):
    """Marks items so that every picture of the tree is visible: marked and unmarked items, files in ROM, and folders
    with and without a mark."""
    mouse = Mouse(user)
    for name in "Files", "Windows", "My Documents", "Databases":
        mouse.expand(name)
    for name in MARKED:
        mouse.mark_row(name)
    visit("1-tree", MAIN)
    mouse.click_row("Databases", -8)


def open_menu_and_dialogs(user, visit):
    keyboard = Keyboard(user)
    user.keys("alt+f")
    visit("2-menu", None)
    user.keys("Escape", "Escape")
    for name, item, title in ("3-about", "About...", "Quillbox"), ("4-options", "Options...", "Options"), \
            ("5-filter", "Filter...", "File filter"):
        keyboard.menu(title, "File", item)
        visit(name, title)
        if name == "5-filter":
            keyboard.tick(title, "Show files newer than :", "Show only files with these extentions :")
            user.type("txt")
            visit("5-filter-on", title)
        user.escape(title)
    keyboard.menu("Backup selected Item", "Operations", "Backup", "Selected items...")
    visit("6-selected-backup", "Backup selected Item")
    user.escape("Backup selected Item")


def back_up(user, visit):
    keyboard = Keyboard(user)
    keyboard.tool("Full Backup", "Full backup")
    user.type("Before the journey")
    keyboard.tick("Full Backup", "All files", "All databases", "Registry")
    visit("6-full-backup", "Full Backup")
    keyboard.press("Full Backup", "OK")
    user.window("Select")
    visit("7-chooser", "Select")
    user.opens("Error", lambda: user.keys("Return"))
    visit("8-message", "Error")
    keyboard.answer("Error", "OK")
    keyboard.row("Select", CARD)
    visit("9-chooser-chosen", "Select")
    keyboard.press("Select", "OK")
    keyboard.full_backup(CARD, "All files")
    user.window("Info?")
    visit("10-question", "Info?")
    keyboard.answer("Info?", "No")


def restore(user, visit):
    keyboard = Keyboard(user)
    for name, item, title in ("11-partial-restore", "Partial...", "Restore selection"), \
            ("12-full-restore", "Full...", "Full Restore"):
        keyboard.menu("Select", "Operations", "Restore", item)
        keyboard.choose(CARD + "\\QUILBOX\\QLBX0001.QLT")
        user.window(title)
        if item == "Partial...":
            user.tab_to(title, role="list")
            user.keys("Down", "space", "Down", "Down", "space")
        visit(name, title)
        user.escape(title)
