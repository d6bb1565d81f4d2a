#!/usr/bin/python3
"""The program's requests to the desktop during a run: no sleep, its progress in the taskbar, and at the end a
notification if its window isn't in front. This script plays the desktop's services.

    desktop_services_test.py BIN-FOLDER
Exit code 77: a tool is missing.
"""
import os
import sys

from desktop import MAIN, Desktop, require, require_tools, wait_for, xdotool
from rough_desktop_test import Case

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
FILES = 9000  # so many that the test can minimise the window before the run ends
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


def back_up(case, services, number):
    case.back_up()
    if number > 1:
        case.user.ends("Info?", lambda: case.user.keys("n"))
    case.await_data(number)
    wait_for("the inhibitor", lambda: len(services.inhibited) == number)


def main(bin_folder):
    require_tools()
    desktop = Desktop(bin_folder)
    services = Services()
    os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = os.environ["DBUS_SESSION_BUS_ADDRESS"]
    case = Case(desktop, files=FILES)
    back_up(case, services, 1)
    require(services.is_held(), "the computer may sleep during the run")
    xdotool("search", "--name", f"^{MAIN}$", "windowminimize", "--sync")
    wait_for("the notification", lambda: services.notifications)
    _, _, _, title, text, _, _, _ = services.notifications[0]
    require(title == "The backup is done" and text.startswith(f"Set 1 on \\Card: {FILES:,} files"), f"{title}: {text}")
    require(not services.is_held(), "the computer can't sleep after the run")
    require(services.inhibited[0][0] == "sleep" and services.inhibited[0][3] == "block", services.inhibited[0])
    shares = [share for share, visible in services.shares if visible]
    require(shares == sorted(set(shares)) and any(0 < share < 1 for share in shares), f"the taskbar shows {shares}")
    require(not services.shares[-1][1], "the taskbar still shows a run")

    # The window is in front again, so the user sees the end.
    xdotool("search", "--name", f"^{MAIN}$", "windowactivate", "--sync")
    back_up(case, services, 2)
    case.user.find(MAIN, "Set 2 on \\Card: ", starts=True)
    wait_for("the end of the inhibitor", lambda: not services.is_held())
    require(len(services.notifications) == 1, services.notifications)
    case.steps.leave()


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
