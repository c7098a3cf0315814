"""Virtual touchpads that send the reports of a finger, and the input devices that the kernel creates for them."""

import contextlib
import os
import pathlib
import struct
import threading

import uhid
from waiting import wait_for

INPUT = pathlib.Path("/sys/class/input")

# The part of the report descriptor for one finger: confidence, tip switch, contact identifier and position. A report
# contains two fingers, the scan time, the number of contacts and one button.
FINGER = ("050d0922a102" "150025010947094275019502810295068103" "7508950125" "7f09518102"
          "050126ff0f751095015500650035004600000930810226ff0709318102" "c0")
TOUCHPAD = bytes.fromhex("050d0905a1018501" + 2 * FINGER +
                         "050d150027ffff00007510950109568102" "257f750895010954" "8102"
                         "05090901250175019501810295078103"
                         "050d85020955250f75089501b102"
                         # The certification blob, by which the kernel recognizes a precision touchpad.
                         "0600ff850409c5150026ff00750896" "0001b102" "c0")
# A mouse collection, which many touchpads have for systems without touchpad support. The kernel creates a second input
# device for it.
MOUSE = bytes.fromhex("05010902a10185030901a1000509190129021500250175019502810295068103"
                      "0501093009311581257f750895028106c0c0")

class Touchpad:
    """A virtual touchpad with one HID interface. With `twin`, its report descriptor includes the mouse collection."""

    def __init__(self, name, vendor, product, bus, uniq, twin):
        self.uniq, self._twin = uniq, twin
        self._scan = 0
        self._device = uhid.UHID(name, vendor, product, bus, TOUCHPAD + (MOUSE if twin else b""), uniq=uniq)
        threading.Thread(target=self._answer, daemon=True).start()

    def stroke(self):
        """Sends reports of a finger that touches the pad, moves and is lifted."""
        for place in range(100, 1100, 200):
            self._touch(True, place)
        self._touch(False, 1100)

    def push(self):
        """Sends a report of the mouse collection, a movement to the right. Does nothing without a twin."""
        if self._twin:
            self._device.input(bytes([3, 0, 5, 0]))

    def destroy(self):
        self._device.destroy()

    def _touch(self, down, place):
        self._scan += 70
        finger = struct.pack("<BBHH", 3 if down else 1, 1, place, place)
        self._device.input(b"\1" + finger + bytes(6) + struct.pack("<HBB", self._scan & 0xffff, 1, 0))

    def _answer(self):
        # The driver requests feature reports when it starts, and waits for each answer until a timeout.
        with contextlib.suppress(OSError, TypeError):
            while True:
                kind, event = self._device.read()
                number = struct.unpack_from("<I", event)[0]
                if kind == uhid.GET_REPORT:
                    self._device.refuse_get_report(number)
                elif kind == uhid.SET_REPORT:
                    self._device.answer_set_report(number)


class InputDevice:
    """An input device that the kernel created. Its nodes in /dev/input are open for reading."""

    def __init__(self, folder):
        self.number = folder.name
        self.name = (folder / "name").read_text().strip()
        self._attribute = folder / "inhibited"
        self._nodes = []
        for node in [*folder.glob("event*"), *folder.glob("mouse*")]:
            path = pathlib.Path("/dev/input", node.name)
            wait_for(path.exists, f"the node {path}")
            self._nodes.append(os.open(path, os.O_RDONLY | os.O_CLOEXEC | os.O_NONBLOCK))

    @property
    def inhibited(self):
        return self._attribute.read_text().strip() == "1"

    def inhibit(self, yes):
        self._attribute.write_text("1" if yes else "0")

    def take(self):
        """Returns the number of bytes that all nodes have delivered since the last call; 0 for a removed device."""
        return sum(len(read_all(node)) for node in self._nodes)

    def close(self):
        for node in self._nodes:
            os.close(node)


def read_all(node):
    data = b""
    with contextlib.suppress(BlockingIOError, OSError):
        while part := os.read(node, 4096):
            data += part
    return data


class Pad:
    """A plugged touchpad, with the one or two input devices that the kernel created for it."""

    def __init__(self, hardware, twin):
        self._hardware, self._count = hardware, 2 if twin else 1
        self.inputs = []
        self.look_again()

    def look_again(self):
        """Opens the input devices that exist now. The kernel creates new ones when a driver is bound again."""
        for device in self.inputs:
            device.close()
        self.inputs = [InputDevice(folder) for folder in
                       wait_for(self._folders, f"{self._count} input devices of {self._hardware.uniq}")]

    @property
    def inhibited(self):
        return [device.inhibited for device in self.inputs]

    def use(self):
        """Sends reports of the finger and of the twin. Returns for each input device whether it delivered events."""
        for device in self.inputs:
            device.take()
        self._hardware.stroke()
        self._hardware.push()
        return [device.take() > 0 for device in self.inputs]

    def destroy(self):
        self._hardware.destroy()

    def _folders(self):
        found = [folder for folder in INPUT.glob("input*") if self._is_ours(folder) and list(folder.glob("event*"))]
        return sorted(found) if len(found) == self._count else None

    def _is_ours(self, folder):
        with contextlib.suppress(OSError):
            return (folder / "uniq").read_text().strip() == self._hardware.uniq
        return False
