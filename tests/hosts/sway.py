"""The screen of a headless sway: a virtual mouse, and pictures of the screen."""

import io
import os
import socket
import struct
import subprocess
import time

from PIL import Image

from waiting import check

BUTTONS = {1: 0x110, 3: 0x111}  # the kernel's BTN_LEFT and BTN_RIGHT


class SwayScreen:
    def __init__(self, environment):
        self._environment = environment
        self._mouse = VirtualMouse(os.path.join(environment["XDG_RUNTIME_DIR"], environment["WAYLAND_DISPLAY"]))
        self.size = self.picture().size

    def picture(self):
        """Returns a picture of the whole screen in physical pixels, without the pointer."""
        taken = subprocess.run(["grim", "-t", "ppm", "-"], env=self._environment, capture_output=True, check=True)
        return Image.open(io.BytesIO(taken.stdout)).convert("RGB")

    def point(self, x, y):
        self._mouse.point(x, y, self.size)

    def click(self, x, y, button=1):
        """Clicks with a mouse button: 1 is the left one, 3 the right one."""
        self.point(x, y)
        for pressed in (1, 0):
            self._mouse.button(BUTTONS[button], pressed)

    def close(self):
        self._mouse.close()


class VirtualMouse:
    """A Wayland client that sends the events of a mouse, through the protocol wlr-virtual-pointer-unstable-v1."""

    DISPLAY, REGISTRY, CALLBACK, MANAGER, POINTER = range(1, 6)
    INTERFACE = "zwlr_virtual_pointer_manager_v1"

    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(10)
        self._socket.connect(path)
        self._received = b""
        self._send(self.DISPLAY, 1, struct.pack("I", self.REGISTRY))
        number = None
        for sender, opcode, body in self._events_until_done(self.CALLBACK):
            if (sender, opcode) == (self.REGISTRY, 0) and self._text(body, 4) == self.INTERFACE:
                number = struct.unpack_from("I", body)[0]
        check(number is not None, "sway offers no virtual mouse")
        name = self.INTERFACE.encode() + b"\0"
        bind = struct.pack("II", number, len(name)) + name.ljust(-(-len(name) // 4) * 4, b"\0")
        self._send(self.REGISTRY, 0, bind + struct.pack("II", 1, self.MANAGER))
        self._send(self.MANAGER, 0, struct.pack("II", 0, self.POINTER))

    def point(self, x, y, extent):
        # Move twice. The first motion may make the pointer enter a surface, which does not count as a motion in it.
        for step in (1, 0):
            self._send(self.POINTER, 1, struct.pack("5I", self._time(), int(x) + step, int(y), *extent))
            self._send(self.POINTER, 4)

    def button(self, button, pressed):
        self._send(self.POINTER, 2, struct.pack("3I", self._time(), button, pressed))
        self._send(self.POINTER, 4)

    def close(self):
        self._socket.close()

    def _send(self, target, opcode, body=b""):
        self._socket.sendall(struct.pack("II", target, (8 + len(body)) << 16 | opcode) + body)

    def _events_until_done(self, callback):
        self._send(self.DISPLAY, 0, struct.pack("I", callback))
        while True:
            sender, word = struct.unpack("II", self._read(8))
            body = self._read((word >> 16) - 8)
            if sender == callback:
                return
            yield sender, word & 0xFFFF, body

    def _read(self, length):
        while len(self._received) < length:
            received = self._socket.recv(65536)
            check(received, "sway closed the connection to its virtual mouse")
            self._received += received
        taken, self._received = self._received[:length], self._received[length:]
        return taken

    @staticmethod
    def _text(body, offset):
        length = struct.unpack_from("I", body, offset)[0]
        return body[offset + 4:offset + 3 + length].decode()

    @staticmethod
    def _time():
        return time.monotonic_ns() // 1_000_000 & 0xFFFFFFFF
