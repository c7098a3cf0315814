"""Reads the status item and its menu over the session bus, as a host does."""

from gi.repository import Gio, GLib

from waiting import Failed, check, wait_for

BUS = ("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus")
WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
PROPERTIES = "org.freedesktop.DBus.Properties"
PROGRAM = "org.ble_kovra.BLEKovra"


class Caller:
    def __init__(self, connection):
        self._connection = connection

    def call(self, name, path, interface, method, arguments=None):
        try:
            return self._connection.call_sync(name, path, interface, method, arguments, None,
                                              Gio.DBusCallFlags.NO_AUTO_START, 10_000, None).unpack()
        except GLib.Error as error:
            raise Failed(f"{interface}.{method} of {name}: {error.message}") from None

    def property(self, name, path, interface, which):
        return self.call(name, path, PROPERTIES, "Get", GLib.Variant("(ss)", (interface, which)))[0]

    def has_owner(self, name):
        return self.call(*BUS, "NameHasOwner", GLib.Variant("(s)", (name,)))[0]

    def pid_of(self, name):
        return self.call(*BUS, "GetConnectionUnixProcessID", GLib.Variant("(s)", (name,)))[0]


class Entry:
    """One entry of the menu; `properties` are those that the host receives, without defaults."""

    def __init__(self, number, properties):
        self.number, self.properties = number, properties

    @property
    def title(self):
        return None if self.properties.get("type") == "separator" else self.properties.get("label", "")

    @property
    def checked(self):
        """Returns whether the entry has its check mark, or None if it cannot carry one."""
        if self.properties.get("toggle-type", "") != "checkmark":
            return None
        return self.properties.get("toggle-state", -1) == 1


class Item:
    def __init__(self, connection, name, path):
        self._bus, self.name, self.path = Caller(connection), name, path
        self._menu = self.property("Menu")

    def property(self, which):
        return self._bus.property(self.name, self.path, ITEM, which)

    def entries(self):
        """Returns the whole menu, as a host reads it when it opens the menu."""
        call = GLib.Variant("(iias)", (0, -1, []))
        _, (_, properties, children) = self._bus.call(self.name, self._menu, MENU, "GetLayout", call)
        check(properties.get("children-display") == "submenu", f"the menu's root is {properties}")
        return [Entry(number, own) for number, own, below in children]

    def properties_of_entries(self, numbers):
        """Returns the properties of these entries by number, as the other method that hosts use reports them."""
        call = GLib.Variant("(aias)", (numbers, []))
        return dict(self._bus.call(self.name, self._menu, MENU, "GetGroupProperties", call)[0])

    def choose(self, position):
        """Reports the choice of an entry, as a host does when a person clicks it."""
        clicked = (self.entries()[position].number, "clicked", GLib.Variant("i", 0), 0)
        self._bus.call(self.name, self._menu, MENU, "Event", GLib.Variant("(isvu)", clicked))

    def checked(self, position):
        return self.entries()[position].checked


def item_of_program(connection):
    """Returns the item of the program itself, whether or not a host shows it."""
    return Item(connection, PROGRAM, "/StatusNotifierItem")


def registered_item(connection, pid, limit=60.0):
    """Waits until the watcher lists an item of this process; returns the item."""
    bus = Caller(connection)

    def found():
        if not bus.has_owner(WATCHER):
            return None
        for entry in bus.property(WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisteredStatusNotifierItems"):
            name, slash, path = entry.partition("/")
            # A watcher may still list an item that has just been removed.
            if bus.has_owner(name) and bus.pid_of(name) == pid:
                return Item(connection, name, slash + path or "/StatusNotifierItem")
        return None
    return wait_for(found, "the item to be registered at the host's watcher", limit)
