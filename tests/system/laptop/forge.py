"""Sends forged signals of the login manager to every client of the system bus, as any local user account may.

    forge.py SESSION TIMES

The signals say that the session has ended, that it has become active, and that the machine has woken from sleep. Each
client receives each signal TIMES times.
"""

import ctypes
import sys

LOGIN, PATH = b"org.freedesktop.login1", b"/org/freedesktop/login1"
SESSION_INTERFACE, PROPERTIES = LOGIN + b".Session", b"org.freedesktop.DBus.Properties"
BUS, BUS_PATH = b"org.freedesktop.DBus", b"/org/freedesktop/DBus"

sd = ctypes.CDLL("libsystemd.so.0")


def call(function, *arguments):
    result = getattr(sd, function)(*arguments)
    if result < 0:
        sys.exit(f"forge: {function} returned {result}")


def clients(bus):
    answer, names = ctypes.c_void_p(), ctypes.POINTER(ctypes.c_char_p)()
    call("sd_bus_call_method", bus, BUS, BUS_PATH, BUS, b"ListNames", None, ctypes.byref(answer), b"")
    call("sd_bus_message_read_strv", answer, ctypes.byref(names))
    found = []
    for name in names:
        if name is None:
            return found
        if name.startswith(b":"):
            found.append(name)


def send(bus, client, path, interface, member, types, *values):
    signal = ctypes.c_void_p()
    call("sd_bus_message_new_signal", bus, ctypes.byref(signal), path, interface, member)
    call("sd_bus_message_append", signal, types, *values)
    call("sd_bus_message_set_destination", signal, client)
    call("sd_bus_send", bus, signal, None)
    sd.sd_bus_message_unref(signal)


def main():
    session, times = sys.argv[1].encode(), int(sys.argv[2])
    bus, encoded = ctypes.c_void_p(), ctypes.c_char_p()
    call("sd_bus_open_system", ctypes.byref(bus))
    call("sd_bus_path_encode", PATH + b"/session", session, ctypes.byref(encoded))
    for _ in range(times):
        for client in clients(bus):
            send(bus, client, PATH, LOGIN + b".Manager", b"SessionRemoved", b"so", session, encoded)
            send(bus, client, encoded, PROPERTIES, b"PropertiesChanged", b"sa{sv}as", SESSION_INTERFACE, 1, b"Active",
                 b"b", 1, 0)
            send(bus, client, PATH, LOGIN + b".Manager", b"PrepareForSleep", b"b", 0)
    call("sd_bus_flush", bus)


main()
