"""The environment of a scenario of the bare machine: starts the program, udevd and the session bus, checks the flag."""

import os
import pathlib
import shutil
import signal
import subprocess

import driver
import program
from flag import Flag
from journal import Journal
from ports import Ports
from waiting import check, now, stay_until, wait_for

UDEVD = "/usr/lib/systemd/systemd-udevd"
# The udev rules that are kept. The host's other rules would slow the machine down, and differ between hosts.
RULES = ["50-udev-default", "60-evdev", "60-input-id", "60-persistent-input", "70-mouse", "70-touchpad"]
RULES_FOLDERS = ["/usr/lib/udev/rules.d", "/etc/udev/rules.d"]
BUS_ADDRESS = "unix:path=/run/kovra/bus"

# The earliest write of "off", in seconds after the kernel removed the device.
GRACE = 2.0
# The latest writes of "off" and "on", in seconds after udevd's event. They are not measured from the kernel's event,
# since udevd may need a second in an emulated machine on a busy host.
LATEST_OFF = 2.5
LATEST_ON = 1.0


def keep_rules():
    kept = {name: (pathlib.Path(RULES_FOLDERS[0]) / f"{name}.rules").read_text() for name in RULES}
    for folder in RULES_FOLDERS:
        os.makedirs(folder, exist_ok=True)
        subprocess.run(["/bin/busybox", "mount", "-t", "tmpfs", "tmpfs", folder], check=True)
    for name, text in kept.items():
        (pathlib.Path(RULES_FOLDERS[0]) / f"{name}.rules").write_text(text)


class World(Ports):
    def __init__(self, host, binary, modules):
        pathlib.Path("/run/kovra").mkdir(parents=True)
        super().__init__(host)
        self.binary, self.modules = binary, pathlib.Path(modules)
        self.journal, self.flag = Journal(), Flag()
        keep_rules()
        self._udevd = None
        self._bus = None
        self.programs = []

    def prepare(self):
        shutil.rmtree(program.HOME, ignore_errors=True)
        program.HOME.mkdir(parents=True)
        driver.put_active()
        self.flag.renew()
        self.events.forget()
        self.journal.forget()
        self.start_udevd()

    def clean(self):
        for running in self.programs:
            running.kill()
        self.programs = []
        self.unplug_all()

    def start(self, language="en_US.UTF-8", wait=True, bus=None, display=None, within=(), **choices):
        """Writes the preferences and starts the program, by the command `within` if there is one.

        With `wait`, waits until the program has written the flag.
        """
        program.write_preferences(**choices)
        since = now()
        started = program.Program([*within, self.binary], language, bus or self.session_bus(), display)
        self.programs.append(started)
        if wait:
            wait_for(lambda: any(write.time >= since for write in self.flag.writes) or not started.is_running(),
                     "the program's first write")
            check(started.is_running(), f"the program ended at its start: {started.last_words()}")
        return started

    def session_bus(self):
        if self._bus is None:
            command = ["dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address={BUS_ADDRESS}"]
            self._bus = subprocess.Popen(command, stdin=subprocess.DEVNULL)
            wait_for(lambda: os.path.exists("/run/kovra/bus"), "the session bus")
        return BUS_ADDRESS

    def last_words(self):
        return "\n".join(running.last_words() for running in self.programs)

    def start_udevd(self):
        if self._udevd is None:
            self._udevd = subprocess.Popen([UDEVD], stdin=subprocess.DEVNULL)
            wait_for(lambda: os.path.exists("/run/udev/control"), "udevd")
            self.settle()

    def stop_udevd(self):
        if self._udevd is not None:
            self._udevd.terminate()
            self._udevd.wait()
            self._udevd = None
        shutil.rmtree("/run/udev", ignore_errors=True)

    def hang_udevd(self):
        self._udevd.send_signal(signal.SIGSTOP)

    def resume_udevd(self):
        self._udevd.send_signal(signal.SIGCONT)

    def expect_on(self, device):
        write = self.flag.wait_write("on", device.added)
        late = write.time - self.announced.wait("add", device.node)
        check(late <= LATEST_ON, f'"on" came {late:.2f} s after udevd announced the device')
        return write.time - device.added

    def expect_off_after_grace(self, device):
        """Expects one write, "off", neither before GRACE nor after LATEST_OFF. Returns the delay in seconds."""
        before = self.flag.contents()
        check(before[-1] == "on", f"the flag was no longer on right after the removal: {before}")
        write = self.flag.wait_write("off", device.removed)
        delay = write.time - device.removed
        check(delay >= GRACE, f'"off" came {delay:.3f} s after the removal')
        late = write.time - self.announced.wait("remove", device.node)
        check(late <= LATEST_OFF, f'"off" came {late:.3f} s after udevd announced the removal')
        check(self.flag.contents() == before + ["off"], f"there was more than one write: {self.flag.contents()}")
        return delay

    def expect_quiet_until(self, moment):
        """Expects that the flag is not written until this time."""
        before = len(self.flag.writes)
        stay_until(moment)
        check(len(self.flag.writes) == before, f"there was a write: {self.flag.contents()}")

    def expect_writes(self, *contents):
        check(self.flag.contents() == list(contents),
              f"the writes were {self.flag.contents()}, and should have been {list(contents)}")
