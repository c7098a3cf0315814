#!/usr/bin/python3
"""A substitute for the settings of a desktop's portal: it reports the preferred color scheme that its argument names
(none, dark or light) on the session bus."""

import sys

from gi.repository import Gio, GLib

NAME = "org.freedesktop.portal.Desktop"
SCHEME = ("org.freedesktop.appearance", "color-scheme")
INTERFACE = """<node><interface name="org.freedesktop.portal.Settings">
  <method name="Read">
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/>
  </method>
  <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
  <property name="version" type="u" access="read"/>
</interface></node>"""


def main():
    value = ["none", "dark", "light"].index(sys.argv[1])
    bus = Gio.bus_get_sync(Gio.BusType.SESSION, None)
    interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]

    def call(_, sender, path, name, method, arguments, invocation):
        if arguments.unpack() == SCHEME:
            # The portal's method Read wraps the value in a variant of its own.
            answer = GLib.Variant("v", GLib.Variant("u", value))
            invocation.return_value(GLib.Variant.new_tuple(GLib.Variant("v", answer)))
        else:
            invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "Requested setting not found")
    bus.register_object("/org/freedesktop/portal/desktop", interface, call, None, None)
    Gio.bus_own_name_on_connection(bus, NAME, Gio.BusNameOwnerFlags.NONE, None, None)
    GLib.MainLoop().run()


main()
