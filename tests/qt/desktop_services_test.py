#!/usr/bin/python3
"""The program's requests to the desktop during a run: no sleep, its progress in the taskbar, and at the end a
notification if its window isn't in front. This script plays the desktop's services.

    desktop_services_test.py BIN-FOLDER
Exit code 77: a tool is missing.
"""
import os
import sys

from desktop import MAIN, Desktop, require, require_tools, succeeds, wait_for, xdotool
from steps import Keyboard

INTERFACES = """<node>
  <interface name='org.freedesktop.Notifications'><method name='Notify'>
    <arg type='s' direction='in'/><arg type='u' direction='in'/><arg type='s' direction='in'/>
    <arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='as' direction='in'/>
    <arg type='a{sv}' direction='in'/><arg type='i' direction='in'/><arg type='u' direction='out'/>
  </method></interface>
  <interface name='org.freedesktop.login1.Manager'><method name='Inhibit'>
    <arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='s' direction='in'/>
    <arg type='s' direction='in'/><arg type='h' direction='out'/>
  </method></interface>
</node>"""
FILES = 4
LAUNCHER = "com.canonical.Unity.LauncherEntry"


class Services:
    """The desktop's services. They answer calls only while wait_for() runs."""

    def __init__(self):
        from gi.repository import Gio
        self.gio = Gio
        self.notifications, self.shares, self.inhibited, self.held = [], [], [], None
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        for interface in Gio.DBusNodeInfo.new_for_xml(INTERFACES).interfaces:
            name = interface.name.removesuffix(".Manager")
            self.bus.register_object("/" + name.replace(".", "/"), interface, self.answer, None, None)
            Gio.bus_own_name_on_connection(self.bus, name, Gio.BusNameOwnerFlags.NONE, None, None)
        self.bus.signal_subscribe(None, LAUNCHER, "Update", None, None, Gio.DBusSignalFlags.NONE, self.update)

    def answer(self, bus, sender, path, interface, method, arguments, invocation):
        from gi.repository import GLib
        if method == "Notify":
            self.notifications.append(arguments.unpack())
            invocation.return_value(GLib.Variant("(u)", [len(self.notifications)]))
            return
        self.inhibited.append(arguments.unpack())
        self.held, writer = os.pipe()
        os.set_blocking(self.held, False)
        descriptors = self.gio.UnixFDList.new()
        descriptors.append(writer)  # makes a copy of the descriptor, which the answer passes on
        os.close(writer)
        invocation.return_value_with_unix_fd_list(GLib.Variant("(h)", [0]), descriptors)

    def update(self, bus, sender, path, interface, signal, arguments):
        application, values = arguments.unpack()
        require(application == "application://quillbox.desktop", f"the launcher is told of {application}")
        self.shares.append((values["progress"], values["progress-visible"]))

    def is_held(self):
        try:
            return os.read(self.held, 1) != b""
        except BlockingIOError:
            return True


def restore(user, services, number):
    """Begins a restore. Returns while the first question is open, so the run lasts until the user has answered."""
    steps = Keyboard(user)
    steps.menu("Select", "Operations", "Restore", "Full...")
    steps.choose("\\Card\\QUILBOX\\QLBX0001.QLT")
    steps.press("Full Restore", "OK")
    user.window("Warning")
    wait_for("the inhibitor", lambda: len(services.inhibited) == number)
    require(services.is_held(), "the computer may sleep during the run")
    return steps


def main(bin_folder):
    require_tools()
    desktop = Desktop(bin_folder)
    services = Services()
    os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = os.environ["DBUS_SESSION_BUS_ADDRESS"]
    device, card = desktop.base / "device", desktop.base / "card"
    store = device / "object-store"
    store.mkdir(parents=True)
    card.mkdir()
    for number in range(FILES):
        (store / f"file-{number}").write_bytes(b"content")
    options = ["--card", f"Card={card}"]
    require(succeeds(desktop.bin / "quillbox", "--device", device, *options, "backup", "--to", "Card", "--files"), "no set was made")
    user = desktop.start_program(device, *options)
    user.window(MAIN)

    steps = restore(user, services, 1)
    for _ in range(FILES - 1):
        steps.answer("Warning", "No")
    wait_for("a share in the taskbar", lambda: any(visible and 0 < share < 1 for share, visible in services.shares))
    no = user.find("Warning", "No", "push button")
    xdotool("search", "--name", f"^{MAIN}$", "windowminimize", "--sync")
    wait_for("the windows to go", lambda: not any(user.has(window, "ACTIVE") for window in user.application if window))
    require(no.queryAction().doAction(0), "the question can't be answered")
    wait_for("the notification", lambda: services.notifications)
    _, _, _, title, text, _, _, _ = services.notifications[0]
    require(title == "The restore is done" and text.startswith("Restored from set 1 on \\Card: nothing"), f"{title}: {text}")
    require(not services.is_held(), "the computer can't sleep after the run")
    require(services.inhibited[0][0] == "sleep" and services.inhibited[0][3] == "block", services.inhibited[0])
    shares = [share for share, visible in services.shares if visible]
    require(shares == sorted(set(shares)), f"the taskbar shows {shares}")
    require(not services.shares[-1][1], "the taskbar still shows a run")

    # The window is in front again, so the user sees the end.
    wait_for("the end of the other windows", lambda: [window.name for window in user.application if window] == [MAIN])
    user.until("the window in front", lambda: xdotool("search", "--name", f"^{MAIN}$", "windowactivate", "--sync"),
               lambda: (window := user.is_there(MAIN)) and user.has(window, "ACTIVE"))
    steps = restore(user, services, 2)
    for _ in range(FILES):
        steps.answer("Warning", "Yes")
    user.find(MAIN, f"Restored from set 1 on \\Card: {FILES} files", starts=True)
    steps.leave()  # the program first waits until a notification has been sent
    wait_for("the end of the inhibitor", lambda: not services.is_held())
    require(len(services.notifications) == 1, services.notifications)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
