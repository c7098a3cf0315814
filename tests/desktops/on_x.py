"""The drivers of desktops that an X server shows: the mouse, the keyboard and the pictures are the server's.

These are the desktops on X11, and those on Wayland whose screen is a window on an X server.
"""

import contextlib
import functools
import itertools
import os
import pathlib
import re

from gi.repository import GLib

from gnome import SHELL, Gnome
from item import BUS
from plasma import Plasma
from shell import Shell
from waiting import Failed, now, wait_for
from x11 import X11Screen

DISPLAY = "tmp/.X11-unix/X0"
# The machine's folder in which X clients look for servers.
SERVERS = pathlib.Path("/tmp/.X11-unix")
# X numbers the keys of the kernel from 8.
FIRST_KEY = 8


class OnX:
    """Comes before a desktop's driver among the base classes, and replaces its input and pictures."""

    CAN_SCALE = False
    WIDTH, HEIGHT = Shell.WIDTH, Shell.HEIGHT

    @functools.cached_property
    def _screen(self):
        # An X client finds a server only by its number.
        SERVERS.mkdir(mode=0o1777, exist_ok=True)
        number = next(one for one in itertools.count(os.getpid()) if not os.path.lexists(SERVERS / f"X{one}"))
        link = SERVERS / f"X{number}"
        link.symlink_to(self.session.container.path(DISPLAY))
        try:
            return X11Screen(f":{number}")
        finally:
            link.unlink()

    def picture(self):
        return self._screen.picture()

    def point(self, x, y):
        self._screen.point(x, y)

    def click(self, x, y, button=1, times=1):
        for _ in range(times):
            self._screen.click(x, y, button)

    def key(self, code, is_pressed):
        self._screen.key(FIRST_KEY + code, is_pressed)


class GnomeOnX(OnX, Gnome):
    press = Shell.press

    def restart_panel(self):
        """Restarts GNOME Shell, as users can on X11. Returns the seconds from its start until the icon is back."""
        before = self._owner()
        self.press("Alt", "F2")
        wait_for(lambda: self.evaluate("Main.runDialog?.visible"), "the field for a command", 20)
        self.type("r")
        self.press("Return")
        wait_for(lambda: self._is_new(before), "GNOME Shell to restart", 60)
        begun = now()
        wait_for(self.icon, "the icon to come back", 30)
        seconds = now() - begun
        self.settle()
        return seconds

    def _owner(self):
        return self._bus.call(*BUS, "GetNameOwner", GLib.Variant("(s)", (SHELL[0],)))[0]

    def _is_new(self, before):
        with contextlib.suppress(Failed):  # its name or its object is not on the bus meanwhile
            return self._owner() != before and self.is_ready()
        return False


class PlasmaOnX(OnX, Plasma):
    def windows(self):
        """Names the entry of a window as Plasma's task bar does: it is the one with the window's class."""
        entry = (self.session.files / "usr/share/applications" / self.session.ENTRY).read_text()
        own = re.search("^StartupWMClass=(.*)$", entry, re.M)[1]
        found = super().windows()
        for window in found:
            if window.app.lower() == own.lower():
                window.app = self.session.ENTRY
        return found

    def settle(self):
        self.point(640, 300)
        self.still_picture()
