"""A private desktop for a test: a display, a session bus, a system bus, and a home folder."""

import os
import pathlib
import socket
import subprocess

from gi.repository import Gio

from sway import SwayScreen
from waiting import check, wait_for
from x11 import X11Screen

# The only services that the desktop's buses may start. Panels and screen readers need them.
SERVICES = ["org.xfce.Xfconf", "org.mate.panel.applet.NotificationAreaAppletFactory", "org.a11y.Bus"]
INSTALLED_SERVICES = pathlib.Path("/usr/share/dbus-1/services")
NOBODY = 65534
BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={folder}/{name}-bus</listen>
  <servicedir>{folder}/services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/>
  </policy>
</busconfig>
"""


class Process:
    """A process of the desktop. Its output goes to the file `log`."""

    def __init__(self, name, command, environment, log, **options):
        self.name, self.log = name, log
        with open(log, "ab") as output:
            self._process = subprocess.Popen([str(word) for word in command], env=environment, cwd="/",
                                             stdin=subprocess.DEVNULL, stdout=output, stderr=output, **options)

    @property
    def pid(self):
        return self._process.pid

    def is_running(self):
        return self._process.poll() is None

    def wait_exit(self, limit=20.0):
        """Waits for the end. Returns the exit status, or the negative number of the signal that ended the process."""
        wait_for(lambda: not self.is_running(), f"{self.name} to end", limit)
        return self._process.returncode

    def kill(self):
        if self.is_running():
            self._process.kill()
            self._process.wait()

    def last_words(self):
        return self.log.read_text(errors="replace").strip()[-600:]


class Desktop:
    """The common part of X11Desktop and SwayDesktop: folders, buses, environment variables and processes."""

    def __init__(self, folder, **environment):
        self.folder = pathlib.Path(folder)
        self.folder.chmod(0o755)
        self.home = self.folder / "home"
        self.runtime = self.folder / "run"
        for made in (self.home, self.runtime, self.folder / "services"):
            made.mkdir(parents=True)
        self.runtime.chmod(0o700)
        self.environment = {
            "PATH": "/usr/local/bin:/usr/bin:/bin", "LANG": "C.UTF-8", "HOME": str(self.home),
            "XDG_CONFIG_HOME": str(self.home / ".config"), "XDG_DATA_HOME": str(self.home / ".local/share"),
            "XDG_CACHE_HOME": str(self.home / ".cache"), "XDG_STATE_HOME": str(self.home / ".local/state"),
            "XDG_RUNTIME_DIR": str(self.runtime), "XDG_DATA_DIRS": "/usr/local/share:/usr/share",
            # With these variables, GTK programs use no accessibility bus, and keep their settings in a file in the
            # private home.
            "NO_AT_BRIDGE": "1", "GSETTINGS_BACKEND": "keyfile",
            **environment,
        }
        self.processes = []
        for name in SERVICES:
            installed = INSTALLED_SERVICES / f"{name}.service"
            if installed.exists():
                (self.folder / "services" / installed.name).symlink_to(installed)
        # Open the display before the buses, since the programs that a bus starts inherit the bus's environment.
        self.screen = self._open_display()
        self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = self._start_bus("system")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self._start_bus("session")
        self.bus = self._connect()

    def start(self, name, *command, environment=None, **options):
        """Starts a process with the environment of the desktop, to which `environment` is added."""
        process = Process(name, command, {**self.environment, **(environment or {})}, self.folder / f"{name}.log",
                          **options)
        self.processes.append(process)
        return process

    def configure(self, path, text):
        """Writes a file below ~/.config in the private home folder."""
        file = self.home / ".config" / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def close(self):
        self.bus.close_sync(None)
        self.screen.close()
        for process in reversed(self.processes):
            process.kill()

    def last_words(self):
        processes = [process for process in self.processes if process.last_words()]
        return "\n".join(f"{process.name}: {process.last_words()}" for process in processes)

    def _start_bus(self, name):
        configuration = self.folder / f"{name}-bus.conf"
        configuration.write_text(BUS_CONFIGURATION.format(folder=self.folder, name=name))
        bus = self.start(f"{name}-bus", "dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile")
        path = self.folder / f"{name}-bus"
        wait_for(lambda: _listens(path) or not bus.is_running(), f"the {name} bus")
        check(bus.is_running(), f"the {name} bus ended: {bus.last_words()}")
        return f"unix:path={path}"

    def _connect(self):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        return Gio.DBusConnection.new_for_address_sync(self.environment["DBUS_SESSION_BUS_ADDRESS"], flags, None, None)


def _listens(path):
    """Returns whether the bus accepts connections. The socket file does not show this: it exists a moment earlier."""
    with socket.socket(socket.AF_UNIX) as client:
        return client.connect_ex(str(path)) == 0


class X11Desktop(Desktop):
    extent = "1280x800"

    def _open_display(self):
        reading, writing = os.pipe()
        xvfb = self.start("Xvfb", "Xvfb", "-displayfd", writing, "-screen", "0", f"{self.extent}x24", "-dpi", "96",
                          "-nolisten", "tcp", "-noreset", pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as number:
            display = number.readline().strip()
        check(display, f"Xvfb did not start: {xvfb.last_words()}")
        self.environment["DISPLAY"] = f":{display}"
        return X11Screen(self.environment["DISPLAY"])


class SwayDesktop(Desktop):
    def __init__(self, folder, scale, **environment):
        self._scale = scale
        super().__init__(folder, **environment)

    def _open_display(self):
        self.configure("sway/config", f"xwayland disable\noutput HEADLESS-1 resolution 1280x800 scale {self._scale}\n")
        # sway refuses to run as root.
        other = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
        if other:
            os.chown(self.runtime, NOBODY, NOBODY)
        sway = self.start("sway", "sway", "--config", self.home / ".config/sway/config", environment={
            "WLR_BACKENDS": "headless", "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1"}, **other)
        wait_for(lambda: any(self.runtime.glob("wayland-?")) or not sway.is_running(), "sway's display")
        check(sway.is_running(), f"sway ended: {sway.last_words()}")
        self.environment["WAYLAND_DISPLAY"] = next(self.runtime.glob("wayland-?")).name
        return SwayScreen(self.environment)
