"""The session of a person on a desktop in a container."""

import contextlib
import json

from gi.repository import GLib

from container import connect
from desktops import PERSON, PERSON_ID
from item import PROGRAM
from waiting import Failed, wait_for


# The priority of a warning in the journal; errors have lower numbers.
WARNING = 4
FLAG = "Library/Application Support/ble-kovra/state"


class Session:
    PERSON_ID = PERSON_ID
    RUNTIME = f"run/user/{PERSON_ID}"
    # The program's entry among the desktop's programs.
    ENTRY = f"{PROGRAM}.desktop"

    def __init__(self, desktop, container):
        self.desktop, self.container = desktop, container
        self.bus = self.shell = None

    def start(self):
        """Starts the session, and waits until the desktop can be used."""
        self.container.start_unit(self.desktop.session_unit)
        wait_for(self._connect, "the bus of the session", 60)
        self.shell = self.desktop.shell_class(self)
        wait_for(self._is_ready, "the desktop", 120)
        self.shell.settle()

    def close(self):
        if self.bus:
            with contextlib.suppress(GLib.Error):
                self.bus.close_sync(None)
        self.bus = None

    @property
    def files(self):
        return self.container.files

    @property
    def home(self):
        return self.files / "home" / PERSON

    def flag(self):
        file = self.files / FLAG
        return file.read_text() if file.exists() else None

    def _connect(self):
        if (self.files / self.RUNTIME / "bus").is_socket():
            with contextlib.suppress(GLib.Error):
                self.bus = connect(self.container.path(f"{self.RUNTIME}/bus"), PERSON_ID)
        return self.bus

    def _is_ready(self):
        with contextlib.suppress(Failed):
            return self.shell.is_ready()
        return False

    def journal(self, *options):
        return self.container.run("journalctl", "--no-pager", "-q", *options)

    def complaints(self):
        """Returns the lines of the journal that are wrong: warnings of others about the program, and its own lines."""
        wrong = []
        for line in self.journal("-o", "json").splitlines():
            entry = json.loads(line)
            text, by = str(entry.get("MESSAGE")), entry.get("_COMM", "")
            is_ours = by.startswith("ble-kovra") and by != "ble-kovra-helpe"
            is_about_us = any(name in text for name in ("ble-kovra", "BLE-kovra", "BLEKovra"))
            if is_ours or is_about_us and int(entry.get("PRIORITY", 6)) <= WARNING:
                wrong.append(f"{by}: {text[:200]}")
        return wrong
