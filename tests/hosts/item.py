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
    def __init__(self, connection, seconds=10):
        """`seconds` is the longest time that a call may take."""
        self._connection, self._limit = connection, seconds * 1000

    def call(self, name, path, interface, method, arguments=None):
        try:
            return self._connection.call_sync(name, path, interface, method, arguments, None,
                                              Gio.DBusCallFlags.NO_AUTO_START, self._limit, None).unpack()
        except GLib.Error as error:
            raise Failed(f"{interface}.{method} of {name}: {error.message}") from None

    def property(self, name, path, interface, which):
        return self.call(name, path, PROPERTIES, "Get", GLib.Variant("(ss)", (interface, which)))[0]

    def has_owner(self, name):
        return self.call(*BUS, "NameHasOwner", GLib.Variant("(s)", (name,)))[0]

    def pid_of(self, name):
        return self.call(*BUS, "GetConnectionUnixProcessID", GLib.Variant("(s)", (name,)))[0]


class Entry:
    """An entry of the menu. Properties with default values are not in `properties`, since the program does not send
    them."""

    def __init__(self, number, properties):
        self.number, self.properties = number, properties

    @property
    def title(self):
        return None if self.properties.get("type") == "separator" else self.properties.get("label", "")

    @property
    def checked(self):
        """Returns whether the entry is checked, or None if it cannot be checked."""
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
        """Reads all entries of the menu with the method GetLayout."""
        call = GLib.Variant("(iias)", (0, -1, []))
        _, (_, properties, children) = self._bus.call(self.name, self._menu, MENU, "GetLayout", call)
        check(properties.get("children-display") == "submenu", f"the menu's root is {properties}")
        return [Entry(number, own) for number, own, below in children]

    def properties_of_entries(self, numbers):
        """Reads the properties of these entries with the method GetGroupProperties. Returns them by entry number."""
        call = GLib.Variant("(aias)", (numbers, []))
        return dict(self._bus.call(self.name, self._menu, MENU, "GetGroupProperties", call)[0])

    def choose(self, position):
        """Sends the event "clicked" for the entry at this position, as a host does when the user chooses the entry."""
        clicked = (self.entries()[position].number, "clicked", GLib.Variant("i", 0), 0)
        self._bus.call(self.name, self._menu, MENU, "Event", GLib.Variant("(isvu)", clicked))

    def checked(self, position):
        return self.entries()[position].checked


class Program:
    """The program's own object on the session bus, which ble-kovractl uses, too."""

    PATH = "/org/ble_kovra/BLEKovra"

    def __init__(self, connection):
        self._bus = Caller(connection)

    def property(self, which):
        return self._bus.property(PROGRAM, self.PATH, PROGRAM, which)

    def perform(self, action):
        self._bus.call(PROGRAM, self.PATH, "org.freedesktop.Application", "ActivateAction",
                       GLib.Variant("(sava{sv})", (action, [], {})))


def item_of_program(connection):
    """Returns the program's item by the program's name on the bus, so that no watcher is needed."""
    return Item(connection, PROGRAM, "/StatusNotifierItem")


def registered_item(connection, pid, limit=60.0):
    """Waits until the StatusNotifierWatcher lists an item of this process, and returns the item."""
    bus = Caller(connection)

    def found():
        if not bus.has_owner(WATCHER):
            return None
        for entry in bus.property(WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisteredStatusNotifierItems"):
            name, slash, path = entry.partition("/")
            # A watcher may still list an item whose owner has left the bus.
            if bus.has_owner(name) and bus.pid_of(name) == pid:
                return Item(connection, name, slash + path or "/StatusNotifierItem")
        return None
    return wait_for(found, "the item to be registered at the host's watcher", limit)
