"""A folder in which dpkg installs packages and runs their scripts, without changing anything outside it."""

import os
import re

from built import NAMES
from scenario import run

FLAG = "Library/Application Support/ble-kovra/state"
# The user database. A purge does not remove the helper's user account from it.
USERS = {"etc/passwd", "etc/group", "etc/shadow", "etc/gshadow", "etc/.pwd.lock", "etc/passwd-", "etc/group-",
         "etc/shadow-", "etc/gshadow-"}
MANAGER = "Applications/.Karabiner-VirtualHIDDevice-Manager.app/Contents/MacOS/Karabiner-VirtualHIDDevice-Manager"


class Root:
    """A root folder for dpkg. The maintainer scripts run with $DPKG_ROOT, and cannot control the machine's services.

    A dependency of the packages counts as installed in the folder if it is installed on the machine.
    """

    def __init__(self, built, name):
        self.built, self.path = built, built.folder / name
        records = self.path / "var/lib/dpkg"
        for folder in ("info", "updates", "triggers"):
            (records / folder).mkdir(parents=True)
        # On a real system these folders exist before the packages are installed.
        for folder in ("etc/systemd/system", "var/lib/systemd"):
            (self.path / folder).mkdir(parents=True)
        needed = set()
        for package in NAMES:
            needed.update(re.findall(r"[a-z0-9][a-z0-9.+-]+(?=[ ,|\n(]|$)", built.field(package, "Depends")))
        status = run("dpkg-query", "--show", "--showformat", "${Package}\n").split()
        stanzas = run("dpkg-query", "--status", *sorted(needed & set(status))).strip()
        (records / "status").write_text(stanzas + "\n")
        for stanza in stanzas.split("\n\n"):
            package = re.search(r"^Package: (\S+)", stanza, re.M)[1]
            alike = re.search(r"^Multi-Arch: same$", stanza, re.M)
            architecture = re.search(r"^Architecture: (\S+)", stanza, re.M)[1]
            (records / "info" / (f"{package}:{architecture}.list" if alike else f"{package}.list")).touch()

    def install(self, *files):
        self._dpkg("--install", *files)

    def remove(self, *names):
        self._dpkg("--remove", *names)

    def purge(self, *names):
        self._dpkg("--purge", *names)

    def newer(self, name):
        """Builds this package with a higher version number, and returns its path."""
        place = self.built.folder / "newer" / name
        result = place.parent / f"{name}.deb"
        if not result.exists():
            place.parent.mkdir(exist_ok=True)
            run("dpkg-deb", "--raw-extract", self.built.package(name), place)
            control = place / "DEBIAN/control"
            control.write_text(re.sub(r"^(Version: .*)$", r"\1+next", control.read_text(), flags=re.M))
            run("dpkg-deb", "--build", "--root-owner-group", place, result)
        return result

    def helper_of_root(self):
        """Builds an older version of the helper's package, whose helper runs as root, and returns its path."""
        name = "ble-kovra-helper"
        place = self.built.folder / "older" / name
        result = place.parent / f"{name}.deb"
        if not result.exists():
            place.parent.mkdir(exist_ok=True)
            run("dpkg-deb", "--raw-extract", self.built.package(name), place)
            unit = next(place.glob("**/systemd/system/ble-kovra-helper.service"))
            for path, line, new in ((place / "DEBIAN/control", "^Version: .*$", "Version: 0.0.9"),
                                    (unit, "^(User|Group)=.*$", "")):
                path.write_text(re.sub(line, new, path.read_text(), flags=re.M))
            (place / "DEBIAN/postinst").write_text("#!/bin/sh\n")
            run("dpkg-deb", "--build", "--root-owner-group", place, result)
        return result

    def listing(self):
        """Returns all paths in the folder, without dpkg's database and the user database."""
        found = {str(path.relative_to(self.path)) for path in self.path.rglob("*")} - USERS
        return {path for path in found if not f"{path}/".startswith("var/lib/dpkg/")}

    def helper_user(self):
        """Returns the UID and the GID of the helper's user account."""
        lines = (self.path / "etc/passwd").read_text().splitlines()
        fields = next(line for line in lines if line.startswith("_ble-kovra-helper:")).split(":")
        return int(fields[2]), int(fields[3])

    def environment(self):
        """Returns the environment of the maintainer scripts, in which the commands that control services do nothing."""
        programs = self.built.folder / "programs"
        programs.mkdir(exist_ok=True)
        for name in ("systemctl", "deb-systemd-invoke"):
            (programs / name).write_text("#!/bin/sh\n")
            (programs / name).chmod(0o755)
        return {**os.environ, "PATH": f"{programs}:{os.environ['PATH']}:/usr/sbin:/sbin"}

    def _dpkg(self, action, *what):
        run("dpkg", f"--root={self.path}", "--force-script-chrootless", "--log=/dev/null", action, *what,
            env=self.environment())
