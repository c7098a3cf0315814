"""The status item and its menu as a host reads them: over the session bus."""

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
    """One entry of the menu; `properties` as the host gets them, defaults left out."""

    def __init__(self, number, properties):
        self.number, self.properties = number, properties

    @property
    def title(self):
        return None if self.properties.get("type") == "separator" else self.properties.get("label", "")

    @property
    def checked(self):
        """None for an entry that cannot carry a check mark."""
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
        """The whole menu, as a host reads it when it opens it."""
        call = GLib.Variant("(iias)", (0, -1, []))
        _, (_, properties, children) = self._bus.call(self.name, self._menu, MENU, "GetLayout", call)
        check(properties.get("children-display") == "submenu", f"the menu's root is {properties}")
        return [Entry(number, own) for number, own, below in children]

    def properties_of_entries(self, numbers):
        """The same by the other way to ask, by number of the entry."""
        call = GLib.Variant("(aias)", (numbers, []))
        return dict(self._bus.call(self.name, self._menu, MENU, "GetGroupProperties", call)[0])

    def choose(self, position):
        """As a host tells it that a person has chosen an entry."""
        clicked = (self.entries()[position].number, "clicked", GLib.Variant("i", 0), 0)
        self._bus.call(self.name, self._menu, MENU, "Event", GLib.Variant("(isvu)", clicked))

    def checked(self, position):
        return self.entries()[position].checked


def item_of_program(connection):
    """The item of the program itself, wherever it runs on this bus and whether a host has it or not."""
    return Item(connection, PROGRAM, "/StatusNotifierItem")


def registered_item(connection, pid, limit=20.0):
    """Waits until the watcher lists an item of this process."""
    bus = Caller(connection)

    def found():
        if not bus.has_owner(WATCHER):
            return None
        for entry in bus.property(WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisteredStatusNotifierItems"):
            name, slash, path = entry.partition("/")
            # A watcher may still list one that has just gone.
            if bus.has_owner(name) and bus.pid_of(name) == pid:
                return Item(connection, name, slash + path or "/StatusNotifierItem")
        return None
    return wait_for(found, "the item to be registered at the host's watcher", limit)
