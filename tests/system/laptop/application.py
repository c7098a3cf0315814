"""The installed application, started in the session of a user account."""

import os
import pathlib
import signal

import program
from waiting import check, wait_for

BINARY = "/usr/bin/ble-kovra"
PREFERENCES = ".config/ble-kovra/preferences.json"


def state_of(pid):
    """Returns the letter of the process's state, such as "S" or "T". Empty if there is no such process."""
    try:
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0]
    except OSError:
        return ""


def is_running(pid):
    return state_of(pid) not in ["", "Z"]


class Application:
    def __init__(self, session, display=None, **choices):
        """Without choices, the preferences stay as they are."""
        person = session.person
        path = person.home / PREFERENCES
        if choices:
            program.write_preferences(path, **choices)
            for made in [path, *path.parents[:2]]:
                os.chown(made, person.uid, person.uid)
        self._errors = person.home / "stderr"
        self._errors.unlink(missing_ok=True)
        variables = f"DISPLAY={display} " if display else ""
        self.pid = int(session.run(f"{variables}{BINARY} </dev/null >/dev/null 2>{self._errors} & echo $!"))

    def is_running(self):
        return is_running(self.pid)

    def kill(self):
        if self.is_running():
            os.kill(self.pid, signal.SIGKILL)
            wait_for(lambda: not self.is_running(), "the killed application to end")

    def quit(self):
        os.kill(self.pid, signal.SIGTERM)
        wait_for(lambda: not self.is_running(), "the application to end")

    def stop(self):
        os.kill(self.pid, signal.SIGSTOP)
        wait_for(lambda: state_of(self.pid) == "T", "the application to stop")

    def resume(self):
        os.kill(self.pid, signal.SIGCONT)

    def expect_running(self):
        check(self.is_running(), f"the application has ended: {self.output()[-300:]}")

    def wait_refused(self, word):
        """Waits until the application has logged that it could not write this word into the flag."""
        self.wait_output(f"не удалось записать флаг ({word})")

    def wait_output(self, text):
        """Waits until the application, or a program that it has started, has printed this text."""
        def is_printed():
            self.expect_running()
            return text in self.output()
        wait_for(is_printed, f"the output {text!r}")

    def cpu_time(self):
        """Returns the CPU time that the application has used, in seconds."""
        fields = pathlib.Path(f"/proc/{self.pid}/stat").read_text().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def output(self):
        """Returns what the application has printed to stderr."""
        return self._errors.read_text(encoding="utf-8") if self._errors.exists() else ""

