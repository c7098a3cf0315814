"""The session of a person on a desktop in a container."""

import contextlib
import json
import time

from gi.repository import GLib

from container import connect
from desktops import PERSON, PERSON_ID
from item import PROGRAM
from waiting import Failed, check, now, wait_for


# The priority of a warning in the journal; errors have lower numbers.
WARNING = 4
FLAG = "Library/Application Support/ble-kovra/state"
# Somebody else at the machine, whose session shows nothing.
OTHER, OTHER_UNIT = "boris", "kovra-other.service"
OTHER_SESSION = f"""[Service]
User={OTHER}
PAMName=kovra-session
Environment=XDG_SEAT=seat0 XDG_SESSION_CLASS=user XDG_SESSION_TYPE=wayland
ExecStart=/usr/bin/sleep infinity
"""


class Session:
    PERSON_ID = PERSON_ID
    RUNTIME = f"run/user/{PERSON_ID}"
    # The program's entry among the desktop's programs.
    ENTRY = f"{PROGRAM}.desktop"

    def __init__(self, desktop, container):
        self.desktop, self.container = desktop, container
        self.bus = self.shell = None

    def restart(self):
        """Starts the session again, after the person has logged out."""
        state = lambda: self.container.run("systemctl", "show", "-P", "ActiveState", self.desktop.session_unit).strip()
        wait_for(lambda: state() in ("inactive", "failed"), "the session to end", 60)
        ended = lambda: "user@" not in self.container.run("systemctl", "list-units", "--plain", "--no-legend", "user@*")
        wait_for(ended, "the person's services to end", 60)
        self.close()
        self.start()

    def lock(self, is_locked):
        """Locks or unlocks the screen, and waits until the desktop has done so."""
        number = self._number(PERSON)
        self.container.run("loginctl", "lock-session" if is_locked else "unlock-session", number)
        wanted = "yes" if is_locked else "no"
        seen = lambda: self.container.run("loginctl", "show-session", "-P", "LockedHint", number).strip() == wanted
        wait_for(seen, "the screen to be locked" if is_locked else "the screen to be unlocked", 60)

    @contextlib.contextmanager
    def another_person(self):
        """Somebody else has logged in at the machine, within a `with` block. The first session goes on meanwhile."""
        if OTHER not in self.container.run("getent", "passwd"):
            self.container.run("useradd", "--create-home", OTHER)
        (self.files / "run/systemd/system" / OTHER_UNIT).write_text(OTHER_SESSION)
        self.container.run("systemctl", "daemon-reload")
        self.container.start_unit(OTHER_UNIT)
        self._wait_active(OTHER)
        try:
            yield
        finally:
            self.container.run("systemctl", "stop", OTHER_UNIT)
            self.container.run("loginctl", "activate", self._number(PERSON))
            self._wait_active(PERSON)

    def _number(self, person):
        """Returns the number of the person's session at the machine, or None."""
        lines = [line.split() for line in self.container.run("loginctl", "--no-legend", "list-sessions").splitlines()]
        return next((line[0] for line in lines if line[2] == person and "seat0" in line), None)

    def _wait_active(self, person):
        active = lambda: self.container.run("loginctl", "show-seat", "-P", "ActiveSession", "seat0").strip()
        wait_for(lambda: active() and active() == self._number(person), f"the session of {person} to be active", 60)

    def shut_down(self):
        """Powers the container off. Returns what the flag said until its file system was unmounted."""
        # A process that this one has put there is not reaped while the container stops it.
        self.shell.close()
        seen, latest = [], now() + 120
        self.container.run("systemctl", "--no-block", "poweroff")
        while self.container.is_running():
            check(now() < latest, f"the container goes on: {self.container.last_words()}")
            with contextlib.suppress(OSError):
                seen.append(self.flag())
            time.sleep(0.005)
        return [word for word in seen if word is not None]

    def start(self):
        """Starts the session, and waits until the desktop can be used."""
        self.container.start_unit(self.desktop.session_unit)
        wait_for(self._connect, "the bus of the session", 60)
        self.shell = self.desktop.shell_class(self)
        wait_for(self._is_ready, "the desktop", 120)
        self.shell.settle()

    def close(self):
        if self.shell:
            self.shell.close()
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

    def run(self, *command):
        """Runs a command as the person, in the environment of the session. Returns its output."""
        display = {"WAYLAND_DISPLAY": "wayland-0", "QT_QPA_PLATFORM": "wayland"} if self.desktop.is_wayland else {
            "DISPLAY": ":0"}
        return self.container.run(*command, user=PERSON, HOME=f"/home/{PERSON}", XDG_RUNTIME_DIR=f"/{self.RUNTIME}",
                                  DBUS_SESSION_BUS_ADDRESS=f"unix:path=/{self.RUNTIME}/bus", **display)

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
