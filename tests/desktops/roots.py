"""Makes the root file systems of the desktops: layers of packages, made by debootstrap and apt, each made once.

A layer is a folder of build/desktops. Its name contains a hash of its contents' description and of the layer below it.
So it is made again when its packages, files or commands change, and the former one is removed.
"""

import dataclasses
import fcntl
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import time

from box import Box

FOLDER = pathlib.Path(__file__).resolve().parents[2] / "build/desktops"
BOX = pathlib.Path(__file__).with_name("box.py")
ENVIRONMENT = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "DEBIAN_FRONTEND": "noninteractive",
               "HOME": "/root"}
APT = ["apt-get", "-q", "-y", "-o", "Dpkg::Options::=--force-unsafe-io", "-o", "APT::Keep-Downloaded-Packages=true"]
# No package starts a service while it is installed.
NO_SERVICES = "/usr/sbin/policy-rc.d"


class RootMissing(Exception):
    """Raised if a layer cannot be made. The text says why."""


@dataclasses.dataclass(frozen=True)
class Layer:
    name: str
    # Names of packages of the release.
    packages: tuple = ()
    # Files of packages, which are installed with the packages that they recommend.
    archives: tuple = ()
    # Contents by path. A text that begins with "#!" makes a program.
    files: dict = dataclasses.field(default_factory=dict)
    # What runs in the root after that, each a list of words.
    commands: tuple = ()

    def description(self):
        archives = [hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest() for path in self.archives]
        return json.dumps([self.packages, sorted(archives), self.files, self.commands])


class Root:
    """The root of one release with these layers. `say` reports what is made, and how long it took."""

    def __init__(self, release, layers, say):
        self._release, self._layers, self._say = release, layers, say
        self._folder = FOLDER / release
        self._archives = self._folder / "archives"

    def prepare(self):
        """Makes the layers that are missing. Returns the folders of all layers, the topmost first."""
        (self._archives / "partial").mkdir(parents=True, exist_ok=True)
        with open(self._folder / "lock", "w") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            below = [self._made("base", "debootstrap minbase", self._make_base)]
            for layer in self._layers:
                below.insert(0, self._made(layer.name, below[0].name + layer.description(),
                                           lambda folder, log: self._make_layer(layer, below, folder, log)))
        return below

    def _make_base(self, folder, log):
        _run(["debootstrap", "--variant=minbase", f"--cache-dir={self._archives}", self._release, folder], log)

    def _make_layer(self, layer, below, folder, log):
        for path, text in {NO_SERVICES: "#!/bin/sh\nexit 101\n", **layer.files}.items():
            _write(folder / path.lstrip("/"), text)
        work, root = folder.with_name(f"{folder.name}.work"), folder.with_name(f"{folder.name}.root")
        for made in (work, root):
            made.mkdir()
        folders = {"/var/cache/apt/archives": str(self._archives), **_folders_of(layer.archives)}
        for command in _commands_of(layer):
            box = Box(lower=[str(path) for path in below], upper=str(folder), work=str(work), root=str(root),
                      folders=folders, command=command, environment=ENVIRONMENT, boots=False)
            _run([sys.executable, "-B", BOX, json.dumps(dataclasses.asdict(box))], log)
        (folder / NO_SERVICES.lstrip("/")).unlink()

    def _made(self, name, description, make):
        """Returns the folder of a layer. Calls make(FOLDER, LOG) if there is none, and removes the former one."""
        digest = hashlib.sha256(description.encode()).hexdigest()[:12]
        made = self._folder / f"{name}-{digest}"
        if made.is_dir():
            return made
        for former in self._folder.iterdir():
            if re.fullmatch(rf"{re.escape(name)}-[0-9a-f]{{12}}(\..*)?", former.name):
                shutil.rmtree(former)
        begun = time.monotonic()
        partial = made.with_name(f"{made.name}.partial")
        partial.mkdir()
        make(partial, self._folder / f"{name}.log")
        for left in self._folder.glob(f"{partial.name}.*"):
            shutil.rmtree(left)
        partial.rename(made)
        size = int(subprocess.run(["du", "-sxm", made], capture_output=True, text=True, check=True).stdout.split()[0])
        self._say(f"made {self._release}/{name}: {size} MiB in {time.monotonic() - begun:.0f} s")
        return made


def _commands_of(layer):
    """Yields what makes this layer, in a root that has the files of the layer already."""
    if layer.packages:
        yield [*APT, "update"]
        yield [*APT, "install", "--no-install-recommends", *layer.packages]
    if layer.archives:
        yield [*APT, "install", *(f"{folder}/{pathlib.Path(path).name}"
                                  for folder, path in zip(_folders_of(layer.archives), layer.archives))]
    yield from (list(command) for command in layer.commands)


def _folders_of(archives):
    return {f"/mnt/{number}": str(pathlib.Path(path).parent) for number, path in enumerate(archives)}


def _write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8")
    path.chmod(0o755 if text.startswith("#!") else 0o644)


def _run(command, log):
    """Runs a command in namespaces of its own, so that nothing stays mounted when it has ended or was killed."""
    namespaces = ["setpriv", "--pdeathsig", "KILL", "unshare", "--mount", "--propagation", "private", "--pid", "--fork",
                  "--kill-child", "--mount-proc", "--uts", "--ipc"]
    with open(log, "wb") as output:
        result = subprocess.run([os.fspath(word) for word in [*namespaces, *command]], stdin=subprocess.DEVNULL,
                                stdout=output, stderr=output, check=False)
    if result.returncode != 0:
        last = "\n".join(log.read_text(errors="replace").splitlines()[-8:])
        raise RootMissing(f"{' '.join(map(str, command))[:100]} failed: {last}")
