"""The kernel's events of HID devices with their exact times, and the times at which udevd passed them on.

The events are received through netlink. The kernel's times come from a probe in the kernel, since a listener on a busy
machine may be tens of milliseconds late.
"""

import collections
import os
import pathlib
import re
import socket
import threading

from waiting import be_prompt, notify, now, wait_for

NETLINK_KOBJECT_UEVENT = 15
KERNEL_GROUP, UDEV_GROUP = 1, 2
SO_RCVBUFFORCE = 33

TRACING = pathlib.Path("/sys/kernel/tracing")
# The probed function assembles an event just before it is sent. Its second argument is the event's environment: three
# pointers that do not matter, then the pointers to the variables. The first two are the action and the path.
PROBE = "p:kovra/uevent hid_uevent action=+0(+24(%si)):string path=+0(+32(%si)):string"
TRACED = re.compile(r' (\d+\.\d+): uevent: .* action="ACTION=(\w+)" path="DEVPATH=(\S+)"')

# Thousands of devices have a serial number that begins like this. No test uses their events.
CROWD = b"\0HID_UNIQ=crowd"

Uevent = collections.namedtuple("Uevent", "time action node properties")


def listen(group):
    """Yields the properties of every event of the subsystem "hid" in this netlink group, except the crowd's."""
    netlink = socket.socket(socket.AF_NETLINK, socket.SOCK_DGRAM, NETLINK_KOBJECT_UEVENT)
    netlink.setsockopt(socket.SOL_SOCKET, SO_RCVBUFFORCE, 64 << 20)
    netlink.bind((0, group))
    while True:
        message = netlink.recv(65536)
        if b"\0SUBSYSTEM=hid\0" in message and CROWD not in message:
            # A header, which differs between the two groups, precedes the properties.
            lines = message[message.find(b"ACTION="):].rstrip(b"\0").decode("utf-8", "replace").split("\0")
            yield dict(line.split("=", 1) for line in lines if "=" in line)


class KernelEvents:
    """All events of the subsystem "hid" so far, except the crowd's, in order and with their monotonic times."""

    def __init__(self):
        self._events = []
        # For each action and path, the times of the events whose messages have not been read yet.
        self._moments = collections.defaultdict(collections.deque)
        self._trace = self._probe()
        for work in [self._read_trace, self._listen]:
            threading.Thread(target=work, daemon=True).start()

    def forget(self):
        self._events = []

    def find(self, action, **properties):
        """Returns the first event of this action with all these properties, or None. "node" is its name in sysfs."""
        for event in self._events:
            if event.action == action and all(event.properties.get(name) == value
                                              for name, value in properties.items()):
                return event
        return None

    def wait(self, action, **properties):
        return wait_for(lambda: self.find(action, **properties), f"the kernel's {action} of {properties}")

    @staticmethod
    def _probe():
        (TRACING / "trace_clock").write_text("mono")
        (TRACING / "kprobe_events").write_text(PROBE)
        (TRACING / "events/kovra/uevent/enable").write_text("1")
        return open(TRACING / "trace_pipe", encoding="utf-8", errors="replace")

    def _read_trace(self):
        for line in self._trace:
            noted = TRACED.search(line)
            if noted:
                self._moments[noted[2], noted[3]].append(float(noted[1]))
                notify()

    def _listen(self):
        for properties in listen(KERNEL_GROUP):
            action, path = properties["ACTION"], properties["DEVPATH"]
            moments = self._moments[action, path]
            wait_for(lambda: moments, f"the time of {action} {path}")
            node = os.path.basename(path)
            self._events.append(Uevent(moments.popleft(), action, node, {**properties, "node": node}))
            notify()


class UdevEvents:
    """The times at which udevd's events of HID devices arrived here. For a repeated event the first time counts."""

    def __init__(self):
        self._moments = {}
        threading.Thread(target=self._listen, daemon=True).start()

    def wait(self, action, node):
        return wait_for(lambda: self._moments.get((action, node)), f"udevd's {action} of {node}")

    def _listen(self):
        be_prompt()
        for properties in listen(UDEV_GROUP):
            moment = now()
            self._moments.setdefault((properties["ACTION"], os.path.basename(properties["DEVPATH"])), moment)
            notify()
