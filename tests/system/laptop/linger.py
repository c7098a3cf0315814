"""Sends a client of the system bus a descriptor that takes ten minutes to close, as any local user account may.

    linger.py CLIENT

The descriptor is that of a socket with unsent data and SO_LINGER. It closes when this program ends. The program runs
until it is killed, and prints "sent" once it has sent the descriptor.
"""

import ctypes
import signal
import socket
import struct
import sys

LINGER = 600

sd = ctypes.CDLL("libsystemd.so.0")


def call(function, *arguments):
    result = getattr(sd, function)(*arguments)
    if result < 0:
        sys.exit(f"linger: {function} returned {result}")


def slow_to_close():
    """Returns a socket whose last close() waits, and the other end of its connection, which reads nothing."""
    listener = socket.socket()
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
    listener.bind(("127.0.0.1", 0))
    listener.listen()
    one = socket.create_connection(listener.getsockname())
    other = listener.accept()[0]
    one.setblocking(False)
    try:
        while True:
            one.send(b"x" * 65536)
    except BlockingIOError:
        one.setblocking(True)
    one.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, LINGER))
    return one, other


def main():
    bus, message = ctypes.c_void_p(), ctypes.c_void_p()
    call("sd_bus_open_system", ctypes.byref(bus))
    one, other = slow_to_close()
    # The bus permits signals of any account, but not calls of another client.
    call("sd_bus_message_new_signal", bus, ctypes.byref(message), b"/", b"org.kovra.Linger", b"Sent")
    call("sd_bus_message_append", message, b"h", one.fileno())  # duplicates the descriptor
    call("sd_bus_message_set_destination", message, sys.argv[1].encode())
    # From here on only the message has the descriptor, so the receiver closes it last.
    one.close()
    call("sd_bus_send", bus, message, None)
    call("sd_bus_flush", bus)
    print("sent", flush=True)
    sd.sd_bus_message_unref(message)
    signal.pause()
    other.close()


main()
