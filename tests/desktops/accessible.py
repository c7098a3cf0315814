"""Reads what the programs of a session show, over the bus of assistive technologies (AT-SPI)."""

import contextlib

from gi.repository import GLib

from container import connect
from item import Caller
from waiting import Failed

ROOT = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
ACCESSIBLE, COMPONENT = "org.a11y.atspi.Accessible", "org.a11y.atspi.Component"
# The numbers of at-spi2-core for states, and for places on the screen.
CHECKED, SHOWING = 4, 25
ON_SCREEN = 0


class Thing:
    """Something that a program shows. It may disappear at any time; reading it then raises Failed."""

    def __init__(self, bus, name, path):
        self._bus, self._name, self._path = bus, name, path

    @property
    def label(self):
        return self._bus.property(self._name, self._path, ACCESSIBLE, "Name")

    @property
    def role(self):
        """The name of the role, in English."""
        return self._call("GetRoleName")[0]

    def has(self, state):
        words = self._call("GetState")[0]
        return bool(words[state // 32] >> state % 32 & 1)

    @property
    def box(self):
        left, top, width, height = self._bus.call(self._name, self._path, COMPONENT, "GetExtents",
                                                  GLib.Variant("(u)", (ON_SCREEN,)))[0]
        return [left, top, left + width, top + height]

    def children(self):
        return [Thing(self._bus, *child) for child in self._call("GetChildren")[0]]

    def all(self):
        """Yields everything below, from top to bottom. What disappears meanwhile is left out."""
        try:
            children = self.children()
        except Failed:
            return
        for child in children:
            yield child
            yield from child.all()

    def _call(self, method):
        return self._bus.call(self._name, self._path, ACCESSIBLE, method)


class Accessibility:
    def __init__(self, session):
        # The session's bus may have to start this service.
        place = ("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus")
        address = session.bus.call_sync(*place, "GetAddress", None, None, 0, 20_000, None).unpack()[0]
        path = address.partition("path=")[2].partition(",")[0]
        self._connection = connect(session.container.path(path), session.PERSON_ID)
        self._bus = Caller(self._connection)

    def program(self, label):
        """Returns the program with this name, or None."""
        with contextlib.suppress(Failed):  # at first, nothing is registered
            for thing in Thing(self._bus, *ROOT).children():
                with contextlib.suppress(Failed):
                    if thing.label == label:
                        return thing
        return None

    def close(self):
        self._connection.close_sync(None)
