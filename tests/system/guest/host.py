"""The guest's serial connection to the host: sends reports, and asks the host to plug or unplug QEMU's USB mouse."""

import json
import os
import termios
import threading
import tty


class Host:
    def __init__(self, port="/dev/ttyS1"):
        self._file = os.open(port, os.O_RDWR | os.O_NOCTTY)
        tty.setraw(self._file, termios.TCSANOW)
        self._in = os.fdopen(os.dup(self._file), "r", encoding="utf-8")
        self._lock = threading.Lock()

    def ready(self):
        """Reports that the guest is running. Returns the task that the host sends in reply."""
        return self._ask({"kind": "ready"})

    def report(self, kind, **what):
        with self._lock:
            self._send({"kind": kind, **what})

    def plug_mouse(self, name):
        self._ask({"kind": "plug", "id": name})

    def unplug_mouse(self, name):
        self._ask({"kind": "unplug", "id": name})

    def _ask(self, message):
        with self._lock:
            self._send(message)
            return json.loads(self._in.readline())

    def _send(self, message):
        data = json.dumps(message).encode() + b"\n"
        while data:
            data = data[os.write(self._file, data):]
        # Or else the machine may be switched off before the line has left it.
        termios.tcdrain(self._file)
