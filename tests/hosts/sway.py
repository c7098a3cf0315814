"""The screen of a headless sway: a virtual mouse, and pictures of the screen."""

import io
import os
import struct
import subprocess

from PIL import Image

from wayland import WaylandClient, connected

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


class VirtualMouse(WaylandClient):
    """Sends the events of a mouse, through the protocol wlr-virtual-pointer-unstable-v1."""

    POINTER = WaylandClient.FREE

    def __init__(self, path):
        super().__init__(connected(path), "zwlr_virtual_pointer_manager_v1", 1)
        self.send(self.GLOBAL, 0, struct.pack("II", 0, self.POINTER))

    def point(self, x, y, extent):
        # Move twice. The first motion may make the pointer enter a surface, which does not count as a motion in it.
        for step in (1, 0):
            self.send(self.POINTER, 1, struct.pack("5I", self.time(), int(x) + step, int(y), *extent))
            self.send(self.POINTER, 4)

    def button(self, button, pressed):
        self.send(self.POINTER, 2, struct.pack("3I", self.time(), button, pressed))
        self.send(self.POINTER, 4)
