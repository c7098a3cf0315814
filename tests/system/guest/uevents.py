"""Records the kernel's uevents of HID devices, and those that udevd sends.

Both arrive through netlink. On a busy machine they arrive tens of milliseconds late, so the times of the kernel's
events come from a kprobe.
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
# The kernel calls hid_uevent() just before it sends an event. The second argument is a struct kobj_uevent_env, whose
# pointers to the event's variables begin at offset 24. The first two variables are ACTION and DEVPATH.
PROBE = "p:kovra/uevent hid_uevent action=+0(+24(%si)):string path=+0(+32(%si)):string"
TRACED = re.compile(r' (\d+\.\d+): uevent: .* action="ACTION=(\w+)" path="DEVPATH=(\S+)"')

# churn() in adversity.py creates many devices, whose serial numbers begin with "crowd". Their events are ignored.
CROWD = b"\0HID_UNIQ=crowd"

Uevent = collections.namedtuple("Uevent", "time action node properties")


def listen(group):
    """Yields the properties of each event of the subsystem "hid" in the netlink group, except those with CROWD."""
    netlink = socket.socket(socket.AF_NETLINK, socket.SOCK_DGRAM, NETLINK_KOBJECT_UEVENT)
    netlink.setsockopt(socket.SOL_SOCKET, SO_RCVBUFFORCE, 64 << 20)
    netlink.bind((0, group))
    while True:
        message = netlink.recv(65536)
        if b"\0SUBSYSTEM=hid\0" in message and CROWD not in message:
            # The properties follow a header, which differs between the two groups.
            lines = message[message.find(b"ACTION="):].rstrip(b"\0").decode("utf-8", "replace").split("\0")
            yield dict(line.split("=", 1) for line in lines if "=" in line)


class KernelEvents:
    """The kernel's events since the last forget(), in order. Their times are seconds of CLOCK_MONOTONIC."""

    def __init__(self):
        self._events = []
        # Times from the kprobe that are not assigned to an event from netlink yet, by action and path.
        self._moments = collections.defaultdict(collections.deque)
        self._trace = self._probe()
        for work in [self._read_trace, self._listen]:
            threading.Thread(target=work, daemon=True).start()

    def forget(self):
        self._events = []

    def find(self, action, **properties):
        """Returns the first event with this action and all these properties, or None.

        The property "node" is the name of the device in sysfs. The class adds it to the properties of the kernel.
        """
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
    """The times at which udevd's events arrived. If an event is repeated for a node, the first time counts."""

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
