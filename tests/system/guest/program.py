"""Starts the program under test as a process, and writes its preferences file."""

import contextlib
import json
import os
import pathlib
import re
import signal
import subprocess

from waiting import check, wait_for

HOME = pathlib.Path("/run/kovra/home")
PREFERENCES = HOME / ".config" / "ble-kovra" / "preferences.json"


def write_preferences(path=PREFERENCES, **choices):
    """Writes a preferences file that contains only the given choices: selected=[keys], enabled=bool, mode=text."""
    names = {"selected": "selectedDeviceIDs", "enabled": "isEnabled", "mode": "blockMode"}
    path.parent.mkdir(parents=True, exist_ok=True)
    stored = {names[name]: value for name, value in choices.items()}
    path.write_text(json.dumps(stored, ensure_ascii=False), encoding="utf-8")


def window_processes(program):
    """Returns the PIDs of the window processes of the program that has this PID, without zombies."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            with contextlib.suppress(OSError):
                name, _, rest = (entry / "stat").read_text().partition("(")[2].rpartition(")")
                state, parent = rest.split()[:2]
                if name == "ble-kovra-ui" and state != "Z" and int(parent) == program:
                    found.append(int(entry.name))
    return found


class Program:
    def __init__(self, command, language="en_US.UTF-8", bus=None, display=None):
        environment = {
            "PATH": "/usr/bin:/bin", "HOME": str(HOME), "XDG_CONFIG_HOME": str(HOME / ".config"), "LANG": language,
        }
        if bus:
            environment["DBUS_SESSION_BUS_ADDRESS"] = bus
        if display:
            environment["DISPLAY"] = display
        self.errors = HOME / "stderr"
        with open(self.errors, "wb") as errors:
            self._process = subprocess.Popen(command, env=environment, cwd="/", stdin=subprocess.DEVNULL,
                                             stdout=errors, stderr=errors)

    @property
    def pid(self):
        return self._process.pid

    def is_running(self):
        return self._process.poll() is None

    def send(self, number):
        os.kill(self.pid, number)

    def stop(self):
        """Sends SIGSTOP and waits until the program has stopped."""
        self.send(signal.SIGSTOP)
        wait_for(lambda: self._status("State").startswith("T"), "the program to stop at SIGSTOP")

    def wait_exit(self, limit=20.0):
        """Waits for the end. Returns the exit status, or the negative number of the signal that ended the program."""
        wait_for(lambda: not self.is_running(), "the program to end", limit)
        return self._process.returncode

    def kill(self):
        if self.is_running():
            self._process.kill()
            self._process.wait()

    def cost(self):
        """Returns two sums over the program's threads: voluntary context switches, and CPU time in nanoseconds."""
        switches = time = 0
        for thread in pathlib.Path(f"/proc/{self.pid}/task").iterdir():
            status = (thread / "status").read_text()
            switches += int(re.search(r"^voluntary_ctxt_switches:\s+(\d+)", status, re.M).group(1))
            time += int((thread / "schedstat").read_text().split()[0])
        return switches, time

    def address_space(self):
        """Returns the size of the program's address space in KiB."""
        return int(self._status("VmSize").split()[0])

    def _status(self, name):
        check(self.is_running(), f"the program ended by itself: {self._process.returncode}, {self.last_words()}")
        status = pathlib.Path(f"/proc/{self.pid}/status").read_text()
        return re.search(rf"^{name}:\s+(.*)$", status, re.M).group(1)

    def last_words(self):
        return self.errors.read_text(errors="replace").strip()[-300:]
