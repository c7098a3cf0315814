"""Records with a kprobe when the attribute "inhibited" of an input device is written."""

import collections
import os
import pathlib
import re
import threading

from waiting import Failed, notify, wait_for

TRACING = pathlib.Path("/sys/kernel/tracing")
# A separate trace instance, since uevents.py reads the main one.
OWN = TRACING / "instances" / "inhibitions"
PROBE = b"p:kovra/inhibit inhibited_store device=+0(+0(%di)):string text=+0(%dx):u8\n"
NOTED = re.compile(r' (\d+\.\d+): inhibit: .* device="(input\d+)" text=(\d+)')

Inhibition = collections.namedtuple("Inhibition", "time device on")


class Inhibitions:
    def __init__(self):
        self._noted = []
        # Append, to keep the kprobe of uevents.py. Python's open() cannot append, since this file does not support
        # seeking.
        probes = os.open(TRACING / "kprobe_events", os.O_WRONLY | os.O_APPEND)
        os.write(probes, PROBE)
        os.close(probes)
        OWN.mkdir()
        (OWN / "trace_clock").write_text("mono")
        (OWN / "events/kovra/inhibit/enable").write_text("1")
        threading.Thread(target=self._read, daemon=True).start()

    def forget(self):
        """Forgets all writes until now."""
        self._noted = []

    def wait(self, device, on, since=0.0, limit=90.0):
        """Waits for a write of this value to the device's attribute at or after `since`, and returns its time."""
        try:
            return wait_for(lambda: self.find(device, on, since), "the write", limit)
        except Failed as failed:
            noted = [f"{note.time:.3f} {int(note.on)}" for note in self._noted if note.device == device.number]
            state = "inhibited" if on else "released"
            raise Failed(f"{failed}, {device.number} to be {state} at or after {since:.3f}; "
                         f"all of its writes are {noted}") from None

    def find(self, device, on, since=0.0):
        return next((note.time for note in list(self._noted)
                     if note.time >= since and note.device == device.number and note.on == on), None)

    def count(self, device, on, since):
        """Returns how often this value was written to the attribute of the device at or after `since`."""
        return sum(note.time >= since and note.device == device.number and note.on == on for note in list(self._noted))

    def last(self, device):
        """Returns the time of the last write to the attribute of the device, or None."""
        return next((note.time for note in reversed(list(self._noted)) if note.device == device.number), None)

    def _read(self):
        with open(OWN / "trace_pipe", encoding="ascii", errors="replace") as trace:
            for line in trace:
                noted = NOTED.search(line)
                if noted:
                    self._noted.append(Inhibition(float(noted[1]), noted[2], noted[3] == str(ord("1"))))
                    notify()
