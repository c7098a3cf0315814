"""When the kernel was told to inhibit an input device, or to give it back: its own note of each write that it took."""

import collections
import os
import pathlib
import re
import threading

from waiting import Failed, tell, wait_for

TRACING = pathlib.Path("/sys/kernel/tracing")
# Beside the moments of plugging, which are read from the first one.
OWN = TRACING / "instances" / "inhibitions"
PROBE = b"p:kovra/inhibit inhibited_store device=+0(+0(%di)):string text=+0(%dx):u8\n"
NOTED = re.compile(r' (\d+\.\d+): inhibit: .* device="(input\d+)" text=(\d+)')

Inhibition = collections.namedtuple("Inhibition", "time device on")


class Inhibitions:
    def __init__(self):
        self._noted = []
        # Added to the probes that are there, in a file in which one cannot seek.
        probes = os.open(TRACING / "kprobe_events", os.O_WRONLY | os.O_APPEND)
        os.write(probes, PROBE)
        os.close(probes)
        OWN.mkdir()
        (OWN / "trace_clock").write_text("mono")
        (OWN / "events/kovra/inhibit/enable").write_text("1")
        threading.Thread(target=self._read, daemon=True).start()

    def wait(self, device, on, since=0.0, limit=30.0):
        """The moment of the first such write at or after `since`."""
        try:
            return wait_for(lambda: self.find(device, on, since), "the write", limit)
        except Failed as failed:
            noted = [f"{note.time:.3f} {int(note.on)}" for note in self._noted if note.device == device.number]
            raise Failed(f"{failed}, {device.number} to be {'inhibited' if on else 'given back'} at or after {since:.3f}, "
                         f"where all that it was told is {noted}") from None

    def find(self, device, on, since=0.0):
        return next((note.time for note in list(self._noted)
                     if note.time >= since and note.device == device.number and note.on == on), None)

    def _read(self):
        with open(OWN / "trace_pipe", encoding="ascii", errors="replace") as trace:
            for line in trace:
                noted = NOTED.search(line)
                if noted:
                    self._noted.append(Inhibition(float(noted[1]), noted[2], noted[3] == str(ord("1"))))
                    tell()
