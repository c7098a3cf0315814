"""The environment of a scenario of the laptop: sessions, touchpads, mice and the installed packages."""

import os
import pathlib
import subprocess

import host_packages
import older
import uhid
from application import Application
from inhibitions import Inhibitions
from people import ANNA, BORIS, GREETER
from ports import Ports
from sessions import Session
from touchpad import Pad, Touchpad
from waiting import check, now, stay_until, wait_for

# The virtual console and the session class of each user account.
PLACES = {ANNA: ("tty2", "user"), BORIS: ("tty3", "user"), GREETER: ("tty4", "greeter")}
HELPER = "ble-kovra-helper.service"
# The control group of the helper's unit. It exists while the helper runs.
HELPER_PROCESSES = pathlib.Path("/sys/fs/cgroup/system.slice", HELPER)
FLAG = "/Library/Application Support/ble-kovra/state"
MOUSE, CHOSEN = "Kovra Mouse", ["Kovra Mouse#4660:22136"]

# Limits in seconds. The pads are unmuted at least GRACE after the kernel removed the mouse, and at most LATEST_BACK
# after udevd announced the removal.
GRACE, LATEST_BACK = 2.0, 2.6
# The limit in seconds for muting and unmuting without a grace period. One second is promised; the rest is for the
# emulated machine.
AT_ONCE = 1.5


def run(*command):
    """Runs a command and returns its output to stdout and stderr. The scenario fails if the command fails."""
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True)
    check(done.returncode == 0, f"{' '.join(command)} ends with {done.returncode}: {done.stdout[-1000:]}")
    return done.stdout


def helper_process():
    """Returns the process ID of the helper, or 0 if it is not running."""
    return int(run("systemctl", "show", "-P", "MainPID", HELPER))


def flag():
    with open(FLAG, encoding="utf-8") as file:
        return file.read()


def may_write_flag(session):
    return session.succeeds(f"test -w '{FLAG}'")


class Laptop(Ports):
    def __init__(self, host, packages, earlier=(), life=None):
        super().__init__(host)
        self.life = life  # how long the random life is
        self.inhibitions = Inhibitions()
        self._packages, self._earlier, self._is_installed = packages, earlier, False
        host_packages.keep_named([*packages, *earlier])
        self._sessions, self._applications = {}, []

    def prepare(self):
        self.events.forget()
        self.log_in(ANNA).activate()

    def clean(self):
        for application in self._applications:
            application.kill()
        for person in [BORIS, GREETER]:
            if person in self._sessions:
                self._sessions.pop(person).log_out()
        self._applications = []
        self.unplug_all()

    def last_words(self):
        outputs = [f"{application.pid}: {application.output()[-3000:]}" for application in self._applications]
        return "\n".join([*outputs, run("journalctl", "--no-pager", "-n", "80", "-o", "short-monotonic")])

    def log_in(self, person):
        """Returns the local session of this user account. Opens it if necessary."""
        if person not in self._sessions or not self._sessions[person].is_open():
            self._sessions[person] = Session(person, *PLACES[person])
        return self._sessions[person]

    def install(self):
        """Installs the packages if they are not installed. Otherwise starts the helper if it is not running."""
        if not self._is_installed:
            self.reinstall()
        elif not HELPER_PROCESSES.exists():
            run("systemctl", "start", HELPER)

    def purge(self, *packages):
        run("dpkg", "-P", *packages)
        self._is_installed = False

    def install_earlier(self):
        """Installs the packages of --earlier, for example those of another version. Without them, calls reinstall()."""
        if not self._earlier:
            self.reinstall()
            return
        run("dpkg", "--force-unsafe-io", "-i", *self._earlier)
        self._is_installed = True

    def reinstall(self):
        """Installs the packages, even if they are installed. Returns the output of dpkg."""
        output = run("dpkg", "--force-unsafe-io", "-i", *self._packages)
        self._is_installed = True
        return output

    def install_helper_of_root(self):
        """Installs the older version of the helper's package, as if no other version had been installed before.

        In the older version the helper runs as root. Call this before a pad is plugged in, since the current version
        grants its helper the right to mute plugged pads.
        """
        self.purge("ble-kovra-helper")
        subprocess.run(["userdel", "_ble-kovra-helper"], stderr=subprocess.DEVNULL, check=False)
        run("dpkg", "--force-unsafe-io", "-i", next(path for path in self._packages if path != self._helper_package()))
        self.downgrade_helper()
        self._is_installed = True

    def downgrade_helper(self):
        """Replaces the helper's package by the older version, whose helper runs as root."""
        run("dpkg", "--force-unsafe-io", "-i", older.helper_of_root(self._helper_package()))
        run("udevadm", "control", "--reload")

    def upgrade_helper(self):
        run("dpkg", "--force-unsafe-io", "-i", self._helper_package())

    def _helper_package(self):
        return next(path for path in self._packages if "ble-kovra-helper_" in path)

    def start(self, session=None, display=None, with_helper=True, **choices):
        """Starts the application, by default in Anna's session without a screen and with the mouse chosen."""
        if with_helper:
            self.install()
        return self._started(Application(session or self.log_in(ANNA), display, **(choices or {"selected": CHOSEN})))

    def start_again(self, display=None):
        """Starts the application in Anna's session with the preferences that she has."""
        return self._started(Application(self.log_in(ANNA), display))

    def _started(self, application):
        self._applications.append(application)
        return application

    def start_and_wait_for_write(self):
        """Waits until Anna may write the flag, then starts her application and waits until it has written the flag."""
        self.install()
        wait_for(lambda: may_write_flag(self.log_in(ANNA)), "the flag to be Anna's")
        before = os.stat(FLAG).st_mtime_ns
        started = self.start()
        wait_for(lambda: os.stat(FLAG).st_mtime_ns != before, "the application's first write")
        return started

    def plug_mouse(self):
        return self.plug(MOUSE)

    def plug_pad(self, name="PNP0C50:00 06CB:CD8B", vendor=0x06cb, product=0xcd8b, bus=uhid.BUS_I2C, twin=False):
        pads = []

        def make(uniq):
            pads.append(Pad(Touchpad(name, vendor, product, bus, uniq, twin), twin))
            return pads[0]
        device = self.plug_with(make)
        pads[0].node, pads[0].unplug = device.node, device.unplug
        return pads[0]

    def expect_alive(self, *pads):
        """Expects that no pad is inhibited, and that each delivers events when it is used."""
        for pad in pads:
            wait_for(lambda: not any(pad.inhibited), f"the pad to be unmuted: {pad.inhibited}")
            came = pad.use()
            check(all(came), f"events from the pad's input devices: {came}")

    def expect_dead(self, *pads):
        """Expects that all input devices of the pads are inhibited, and that none delivers events."""
        for pad in pads:
            wait_for(lambda: all(pad.inhibited), f"the pad to be inhibited: {pad.inhibited}")
            came = pad.use()
            check(not any(came), f"events from the pad's input devices: {came}")

    def mute(self, *pads, display=None):
        """Starts Anna's application, plugs in the chosen mouse, and waits until the pads are muted."""
        application = self.start(display=display)
        mouse = self.plug_mouse()
        self.expect_dead(*pads)
        return application, mouse

    def expect_back_after_grace(self, mouse, *pads):
        """Expects that the pads are unmuted at the end of the grace period after the mouse's removal."""
        announced = self.announced.wait("remove", mouse.node)
        for device in [device for pad in pads for device in pad.inputs]:
            back = self.inhibitions.wait(device, False, mouse.removed)
            check(back - mouse.removed >= GRACE, f"back {back - mouse.removed:.3f} s after the removal")
            check(back - announced <= LATEST_BACK, f"back {back - announced:.3f} s after udevd reported the removal")
        self.expect_alive(*pads)
        return f"back after {back - mouse.removed:.2f} s"

    def expect_back_at_once(self, since, *pads, cause=None):
        """Expects that the pads are unmuted after `since`, and at most AT_ONCE after `cause`, by default `since`."""
        for device in [device for pad in pads for device in pad.inputs]:
            back = self.inhibitions.wait(device, False, since)
            late = max(0.0, back - (cause or since))
            check(late <= AT_ONCE, f"back only after {late:.2f} s")
        self.expect_alive(*pads)
        return f"back after {late:.2f} s"

    def expect_dead_until(self, moment, *pads):
        stay_until(moment)
        self.expect_dead(*pads)

    def expect_alive_until(self, moment, *pads):
        """Expects that no pad is inhibited until this time, not even briefly, and that the pads then deliver events."""
        since = now()
        stay_until(moment)
        for device in [device for pad in pads for device in pad.inputs]:
            check(not self.inhibitions.find(device, True, since), f"{device.name} was inhibited meanwhile")
        self.expect_alive(*pads)
