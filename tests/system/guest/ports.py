"""Plugs in and unplugs virtual devices, and records when the kernel added and removed them."""

import itertools
import pathlib
import subprocess

import uhid
from uevents import KernelEvents, UdevEvents
from waiting import wait_for

HID_DEVICES = pathlib.Path("/sys/bus/hid/devices")


class Device:
    """A plugged device. `added` and `removed` are the times of the kernel's events on CLOCK_MONOTONIC, in seconds."""

    def __init__(self, node, added, unplug):
        self.node = node
        self.added = added
        self.removed = None
        self._unplug = unplug

    def unplug(self):
        if self.removed is None:
            self.removed = self._unplug()
        return self.removed


class Ports:
    def __init__(self, host):
        self.host = host
        self.events, self.announced = KernelEvents(), UdevEvents()
        self._devices = []
        self._numbers = itertools.count(1)

    def plug(self, name, vendor=0x1234, product=0x5678, bus=uhid.BUS_USB, descriptor=uhid.MOUSE):
        """Plugs in a virtual device with one HID interface."""
        return self.plug_with(lambda uniq: uhid.UHID(name, vendor, product, bus, descriptor, uniq=uniq))

    def plug_with(self, make):
        """Plugs in the virtual device that make(uniq) creates with the serial number `uniq`."""
        uniq = f"made-up-{next(self._numbers)}"
        made = make(uniq)
        added = self.events.wait("add", HID_UNIQ=uniq)
        return self._keep(Device(added.node, added.time, lambda: self._removed(added.node, made.destroy)))

    def plug_usb_mouse(self):
        """Plugs in QEMU's USB mouse. Call it only once per scenario: events of two such mice cannot be told apart."""
        name = f"mouse{next(self._numbers)}"
        self.host.plug_mouse(name)
        added = self.events.wait("add", HID_NAME="QEMU QEMU USB Mouse")
        return self._keep(Device(added.node, added.time,
                                 lambda: self._removed(added.node, lambda: self.host.unplug_mouse(name))))

    def _removed(self, node, unplug):
        unplug()
        return self.events.wait("remove", node=node).time

    def _keep(self, device):
        self._devices.append(device)
        return device

    def unplug_all(self):
        for device in self._devices:
            device.unplug()
        self._devices = []
        wait_for(lambda: not any(HID_DEVICES.iterdir()), "the last device to be removed")

    def settle(self):
        """Waits until udevd has handled all events of the kernel."""
        subprocess.run(["udevadm", "settle", "--timeout=300"], check=True)
