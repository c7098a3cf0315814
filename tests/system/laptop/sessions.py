"""Opens sessions of systemd-logind: local ones on virtual consoles, and remote ones."""

import fcntl
import os
import pathlib
import subprocess
import sys

from waiting import Failed, wait_for

LOGIN = pathlib.Path(__file__).resolve().with_name("login.py")
SEAT = pathlib.Path("/run/systemd/seats/seat0")
VT_ACTIVATE = 0x5606
SESSIONS = pathlib.Path("/run/systemd/sessions")


def fields(path):
    lines = path.read_text().splitlines() if path.exists() else []
    return dict(line.split("=", 1) for line in lines if "=" in line)


def active():
    """Returns the ID of the active session, or None."""
    return fields(SEAT).get("ACTIVE")


class Session:
    """A login session of a user account, with a shell that executes lines."""

    def __init__(self, person, place, kind="user"):
        self.person = person
        self._console = int(place.removeprefix("tty")) if place.startswith("tty") else None
        self._shell = subprocess.Popen([sys.executable, "-B", LOGIN, person.name, place, kind],
                                       stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1)
        self.number = self.run("echo $XDG_SESSION_ID")
        wait_for(lambda: self.state() in ["online", "active"], f"{person.name}'s session")

    def run(self, line):
        """Executes a line in the shell and returns the first line of its output. The scenario fails if it is empty."""
        self._shell.stdin.write(line + "\n")
        answer = self._shell.stdout.readline().strip()
        if not answer:
            raise Failed(f"{self.person.name}'s shell prints nothing for {line!r}")
        return answer

    def succeeds(self, line):
        return self.run(f"if {line}; then echo yes; else echo no; fi") == "yes"

    def state(self):
        """Returns the state of the session from the login manager, or None if the session has ended."""
        return fields(SESSIONS / self.number).get("STATE")

    def activate(self):
        """Switches to the console of the session, and waits until the login manager has activated the session."""
        self.show_console()
        wait_for(self.is_active, f"{self.person.name}'s session to become active")

    def show_console(self):
        """Switches to the console of the session, without waiting for the login manager."""
        console = os.open("/dev/tty0", os.O_WRONLY | os.O_NOCTTY)
        fcntl.ioctl(console, VT_ACTIVATE, self._console)
        os.close(console)

    def is_active(self):
        return active() == self.number

    def is_open(self):
        return self._shell.poll() is None

    def log_out(self):
        self._shell.stdin.close()
        wait_for(lambda: not self.is_open(), f"{self.person.name} to log out")
