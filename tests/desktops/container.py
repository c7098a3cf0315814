"""Boots a root with systemd in a container: namespaces and control groups of its own, all changes in memory.

Its files are reached through the first process. When that is killed, the kernel ends all its processes and mounts.
"""

import contextlib
import dataclasses
import json
import os
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile

from gi.repository import Gio, GLib

from box import Box
from waiting import Failed, check, wait_for

BOX = pathlib.Path(__file__).with_name("box.py")
CONNECTOR = pathlib.Path(__file__).with_name("connector.py")
SYSTEM_BUS = "run/dbus/system_bus_socket"
SYSTEMD = ("org.freedesktop.systemd1", "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager")
NAMESPACES = ["--mount", "--propagation", "private", "--pid", "--fork", "--kill-child", "--uts", "--ipc", "--net",
              "--cgroup"]


class Container:
    """A container that runs within a `with` block. `layers` are the folders of its root, the topmost first."""

    def __init__(self, layers, environment=None):
        self._layers, self._environment = [str(layer) for layer in layers], environment or {}
        self._process = self.folder = self._groups = self._first = self._files = None

    def __enter__(self):
        try:
            self._boot()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if self._files is not None:
            os.close(self._files)
            self._files = None
        if self._process:
            # Its end ends the first process of the container, and that all others.
            self._process.kill()
            self._process.wait()
        if self._groups:
            wait_for(self._remove_groups, "the container's control groups to be removed", 20)
        if self.folder:
            shutil.rmtree(self.folder)
        self._process = self._groups = self.folder = None

    @property
    def files(self):
        """The container's root folder."""
        return pathlib.Path(f"/proc/{self._first}/root")

    def path(self, place):
        """Returns a path by which this process reaches a file of the container, whoever it acts for."""
        return f"/proc/self/fd/{self._files}/{place.lstrip('/')}"

    def run(self, *command, user=None, check_status=True, **variables):
        """Runs a command in the container, as root or as `user`. Returns its output."""
        become = ["runuser", "-u", user, "--"] if user else []
        inside = ["nsenter", "--target", str(self._first), "--all", "--wd=/", "--", *become, "env", "-i",
                  "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C.UTF-8",
                  *(f"{name}={value}" for name, value in variables.items()), *map(str, command)]
        result = subprocess.run(inside, stdin=subprocess.DEVNULL, capture_output=True, text=True, errors="replace",
                                check=False)
        check(result.returncode == 0 or not check_status,
              f"{' '.join(map(str, command))}: {result.stderr.strip()[-300:]}")
        return result.stdout

    def connected(self, place, user):
        """Returns a socket that is connected to the one at this place, and the socket that ends the connecting process.

        To the server, the process that connects is one in the container, of this user.
        """
        shutil.copy(CONNECTOR, self.files / "tmp")
        ours, theirs = socket.socketpair()
        with theirs:
            subprocess.Popen(["nsenter", "--target", str(self._first), "--all", "--wd=/", "--", "setpriv",
                              f"--reuid={user}", f"--regid={user}", "--clear-groups", "/usr/bin/python3", "-B",
                              f"/tmp/{CONNECTOR.name}", f"/{place}", str(theirs.fileno())], pass_fds=[theirs.fileno()])
        ours.settimeout(10)
        _, descriptors, _, _ = socket.recv_fds(ours, 1, 1)
        check(descriptors, f"nothing listens at {place}")
        return socket.socket(fileno=descriptors[0]), ours

    def start_unit(self, name):
        bus = connect(self.path(SYSTEM_BUS))
        try:
            bus.call_sync(*SYSTEMD, "StartUnit", GLib.Variant("(ss)", (name, "replace")), None, 0, 10_000, None)
        except GLib.Error as error:
            raise Failed(f"{name} was not started: {error.message}") from None
        finally:
            bus.close_sync(None)

    def _boot(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kovra-desktop-"))
        self.folder.chmod(0o755)
        root = self.folder / "root"
        root.mkdir()
        box = Box(lower=self._layers, root=str(root), command=["/lib/systemd/systemd", "--system"],
                  environment={"container": "box", "PATH": "/usr/sbin:/usr/bin:/sbin:/bin", **self._environment})
        self._groups = _make_groups()
        # The shell enters the control groups, which then are the root of the container's own.
        enter = ["sh", "-c", 'echo $$ >"$0" && exec "$@"', self._groups / "cgroup.procs",
                 "setpriv", "--pdeathsig", "KILL", "unshare", *NAMESPACES, sys.executable, "-B", BOX,
                 json.dumps(dataclasses.asdict(box))]
        with open(self.folder / "console", "wb") as console:
            self._process = subprocess.Popen([os.fspath(word) for word in enter], stdin=subprocess.DEVNULL,
                                             stdout=console, stderr=console)
        wait_for(self._is_up, "systemd in the container", 60)
        self._files = os.open(self.files, os.O_PATH | os.O_DIRECTORY)

    def _is_up(self):
        check(self._process.poll() is None, f"the container ended: {self.last_words()}")
        children = pathlib.Path(f"/proc/{self._process.pid}/task/{self._process.pid}/children").read_text().split()
        if not children:
            return False
        self._first = int(children[0])
        # Until systemd runs, the bus at this path is the machine's.
        runs = pathlib.Path(f"/proc/{self._first}/comm").read_text() == "systemd\n"
        return runs and _listens(self.files / SYSTEM_BUS)

    def is_running(self):
        return self._process.poll() is None

    def last_words(self):
        return (self.folder / "console").read_text(errors="replace").strip()[-600:]

    def _remove_groups(self):
        _remove_unused(self._groups)
        return not self._groups.exists()


def connect(path, user=0):
    """Connects to the bus at this path as the user with this number."""
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    os.seteuid(user)
    try:
        return Gio.DBusConnection.new_for_address_sync(f"unix:path={path}", flags, None, None)
    finally:
        os.seteuid(0)


def _listens(path):
    with socket.socket(socket.AF_UNIX) as client:
        return client.connect_ex(str(path)) == 0


def _remove_unused(groups):
    """Removes these control groups and those below, except for those that still have processes."""
    for group, _, _ in os.walk(groups, topdown=False):
        with contextlib.suppress(OSError):
            os.rmdir(group)


def _make_groups():
    """Makes control groups for a container, and removes those that a killed run has left."""
    mounts = pathlib.Path("/proc/self/mountinfo").read_text().splitlines()
    places = [line.split()[4] for line in mounts if line.partition(" - ")[2].startswith("cgroup2 ")]
    check(places, "no control groups of version 2 are mounted on this machine")
    for left in pathlib.Path(places[0]).glob("kovra-desktop-*"):
        if not pathlib.Path(f"/proc/{left.name.split('-')[2]}").exists():
            _remove_unused(left)
    groups = pathlib.Path(tempfile.mkdtemp(prefix=f"kovra-desktop-{os.getpid()}-", dir=places[0]))
    # Services of users have groups below, which they manage.
    groups.chmod(0o755)
    return groups
