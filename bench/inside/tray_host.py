"""Connects the scripts in a private session to the panel of that session, bench/instruments/TrayHost.cpp."""

import collections
import os
import select
import subprocess
import time

TIMEOUT_SECONDS = 10

# `moment` is in nanoseconds of CLOCK_MONOTONIC; `words` are the arguments of the event.
Event = collections.namedtuple("Event", "moment kind words")


class TrayHost:
    """The running panel. Use it as a context manager. `say` sends a command, and `wait` returns the next event."""

    def __init__(self, program):
        self._process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self._unread = b""
        if not self.wait("ready"):
            raise RuntimeError("the tray host did not start")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.stdin.close()
        self._process.wait()

    def say(self, *words):
        self._process.stdin.write(" ".join(map(str, words)).encode() + b"\n")
        self._process.stdin.flush()

    def wait(self, *kinds, seconds=TIMEOUT_SECONDS):
        """Returns the next event of one of these kinds, or None. Discards the events before it."""
        deadline = time.monotonic() + seconds
        while (event := self._next(deadline)) and event.kind not in kinds:
            pass
        return event

    def forget(self):
        """Discards all events that have been received."""
        while self._next(time.monotonic()):
            pass

    def _next(self, deadline):
        while b"\n" not in self._unread:
            left = max(0, deadline - time.monotonic())
            if not select.select([self._process.stdout], [], [], left)[0]:
                return None
            data = os.read(self._process.stdout.fileno(), 65536)
            if not data:
                raise RuntimeError("the tray host ended")
            self._unread += data
        line, self._unread = self._unread.split(b"\n", 1)
        moment, kind, *words = line.decode().split()
        return Event(int(moment), kind, words)
