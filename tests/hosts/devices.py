"""Simulates HID devices with umockdev, for programs that run with the environment variables of `Devices`.

There is no udevd. As root the program receives the kernel's events, and otherwise polls.
"""

import contextlib
import os
import pathlib
import shutil
import socket

import gi
gi.require_version("UMockdev", "1.0")
from gi.repository import UMockdev

import secluded


class Devices:
    PRELOAD = "libumockdev-preload.so.0"

    def __init__(self, folder=None, seen_as=None):
        """`folder` takes the devices, and the programs know it as `seen_as`. By default it is a temporary one."""
        if folder is None:
            secluded.hide("/run/udev")
            self._testbed = UMockdev.Testbed.new()
            folder = self._testbed.get_root_dir()
        self._folder, self._seen_as = pathlib.Path(folder), seen_as or folder
        self._sys = self._folder / "sys"
        os.makedirs(f"{self._sys}/bus/hid/devices")
        self._count = 0

    @property
    def environment(self):
        return {"LD_PRELOAD": self.PRELOAD, "UMOCKDEV_DIR": str(self._seen_as)}

    @staticmethod
    def key(name, number):
        """Returns the key of a mouse in the preferences. The mouse that was plugged in first has the number 1."""
        return f"{name}#1133:{number}"

    def plug(self, name, number=None):
        """Plugs in a mouse with this name, a new one or that with this number. Returns its node, for unplug()."""
        self._count += 1
        number = number or self._count
        node = f"0003:046D:{number:04X}.{self._count:04X}"
        folder = f"{self._sys}/devices/virtual/misc/uhid/{node}"
        os.makedirs(folder)
        os.symlink("../../../../../bus/hid", f"{folder}/subsystem")
        os.symlink(f"../../../devices/virtual/misc/uhid/{node}", f"{self._sys}/bus/hid/devices/{node}")
        os.makedirs(f"{self._sys}/bus/hid/drivers/hid-generic", exist_ok=True)
        os.symlink("../../../../../bus/hid/drivers/hid-generic", f"{folder}/driver")
        with open(f"{folder}/uevent", "w", encoding="utf-8") as uevent:
            uevent.write(f"DRIVER=hid-generic\nHID_ID=0003:0000046D:{number:08X}\nHID_NAME={name}\n")
        self._send("add", node)
        return node

    def unplug(self, node):
        os.unlink(f"{self._sys}/bus/hid/devices/{node}")
        self._send("remove", node)
        shutil.rmtree(f"{self._sys}/devices/virtual/misc/uhid/{node}")

    def _send(self, action, node):
        """Sends an event of the kernel to all programs that receive such events, through umockdev's sockets."""
        path = f"/devices/virtual/misc/uhid/{node}"
        lines = [f"{action}@{path}", f"ACTION={action}", f"DEVPATH={path}", "SUBSYSTEM=hid", "SEQNUM=1", ""]
        for receiver in self._folder.glob("event*"):
            with contextlib.suppress(ConnectionRefusedError), socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as sender:
                sender.sendto("\0".join(lines).encode(), os.fspath(receiver))
