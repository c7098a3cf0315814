"""A Wayland client that binds one global object of the compositor, and sends requests to it."""

import socket
import struct
import time

from waiting import check


class WaylandClient:
    """`connected` is a socket that is connected to the compositor."""

    DISPLAY, REGISTRY, CALLBACK, GLOBAL = range(1, 5)
    # The number of the first object that a subclass creates.
    FREE = 5

    def __init__(self, connected, interface, version):
        self._socket = connected
        self._socket.settimeout(10)
        self._received = b""
        self.send(self.DISPLAY, 1, struct.pack("I", self.REGISTRY))
        number = None
        for sender, opcode, body in self._events_until_done():
            if (sender, opcode) == (self.REGISTRY, 0) and self._text(body, 4) == interface:
                number = struct.unpack_from("I", body)[0]
        check(number is not None, f"the compositor offers no {interface}")
        bind = struct.pack("I", number) + self.text(interface) + struct.pack("II", version, self.GLOBAL)
        self.send(self.REGISTRY, 0, bind)

    def send(self, target, opcode, body=b""):
        self._socket.sendall(struct.pack("II", target, (8 + len(body)) << 16 | opcode) + body)

    def close(self):
        self._socket.close()

    @staticmethod
    def text(text):
        """Returns a text as an argument of a request."""
        content = text.encode() + b"\0"
        return struct.pack("I", len(content)) + content.ljust(-(-len(content) // 4) * 4, b"\0")

    @staticmethod
    def time():
        return time.monotonic_ns() // 1_000_000 & 0xFFFFFFFF

    def _events_until_done(self):
        self.send(self.DISPLAY, 0, struct.pack("I", self.CALLBACK))
        while True:
            sender, word = struct.unpack("II", self._read(8))
            body = self._read((word >> 16) - 8)
            if sender == self.CALLBACK:
                return
            yield sender, word & 0xFFFF, body

    def _read(self, length):
        while len(self._received) < length:
            received = self._socket.recv(65536)
            check(received, "the compositor closed the connection")
            self._received += received
        taken, self._received = self._received[:length], self._received[length:]
        return taken

    @staticmethod
    def _text(body, offset):
        length = struct.unpack_from("I", body, offset)[0]
        return body[offset + 4:offset + 3 + length].decode()


def connected(path):
    made = socket.socket(socket.AF_UNIX)
    made.connect(str(path))
    return made
