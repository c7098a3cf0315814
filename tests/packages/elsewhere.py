"""The packages for other systems: RPMs by rpmbuild, and packages for pacman by makepkg.

Both are packaged from what was built for the Debian packages, since compiling it again would take minutes.
"""

import pathlib
import re
import shutil
import tempfile

from built import NAMES
from scenario import run, without_fakeroot
from waiting import check


def is_root():
    return run("id", "-u", env=without_fakeroot()).strip() == "0"


def as_root(*command):
    """Runs a command and returns its output: as root, or for an ordinary user as root of a user namespace. Unlike under
    fakeroot, the command can call chroot(), and owners of files are real."""
    namespace = [] if is_root() else ["unshare", "--map-root-user"]
    return run(*namespace, *command, env=without_fakeroot())


class Elsewhere:
    """The packages of one of these systems, and their files unpacked. Subclasses build and install them."""

    def __init__(self, built):
        self.folder = pathlib.Path(tempfile.mkdtemp(dir=built.folder, prefix=type(self).__name__))
        self.places = {}
        self.archives = self.build(built)
        check(set(self.archives) == set(NAMES), f"it builds {self.archives}")
        for name, archive in self.archives.items():
            self.places[name] = self.folder / "unpacked" / name
            self.places[name].mkdir(parents=True)
            run("bsdtar", "-xf", archive, "-C", self.places[name])

    def files(self, name):
        """Returns the absolute paths of the files in this package, without what the packaging itself adds."""
        place = self.places[name]
        files = (path for path in place.rglob("*") if path.is_symlink() or not path.is_dir())
        found = {"/" + str(path.relative_to(place)) for path in files}
        return {path for path in found if not path.startswith(("/.", "/usr/lib/.build-id/"))}


class Rpms(Elsewhere):
    def build(self, built):
        self.spec = built.tree / "packaging/rpm/ble-kovra.spec"
        name = f"ble-kovra-{built.version}"
        # Since version 4.20 rpmbuild has a folder for each package there.
        for place in (self.folder / "BUILD", self.folder / f"BUILD/{name}-build"):
            (place / name).mkdir(parents=True)
            (place / name / "build").symlink_to(built.build)
            shutil.copy(built.tree / "LICENSE", place / name)
            (place / "SPECPARTS").mkdir()
        # Each command runs only one stage. Debian's database of RPMs is empty, so no dependency counts as installed.
        for stage in ("-bi", "-bb"):
            run("rpmbuild", stage, "--short-circuit", "--nodeps", "--define", f"_topdir {self.folder}",
                "--define", "debug_package %{nil}", self.spec)
        found = self.folder.rglob("RPMS/*/*.rpm")
        return {re.match(r"(.+)-[^-]+-[^-]+$", path.stem)[1]: path for path in found}

    def rpm(self, root, *what):
        # In an empty folder there is no shell for the scripts.
        as_root("rpm", "--root", root, "--dbpath", "/var/lib/rpm", "--nodeps", "--noscripts", *what)

    def install(self, root):
        self.rpm(root, "--install", *self.archives.values())

    def remove(self, root):
        self.rpm(root, "--erase", *NAMES)

    def query(self, name, *what):
        return run("rpm", "--dbpath", self.folder / "database", "--query", *what, "--package", self.archives[name])

    def version(self, name):
        return self.query(name, "--queryformat", "%{VERSION}")

    def needs(self, name):
        """Returns the required packages, with their versions, and the required libraries, without theirs."""
        lines = set(self.query(name, "--requires").splitlines())
        found = {re.sub(r"\(.*", "", line) if ".so." in line else line for line in lines}
        return {each for each in found if not each.startswith(("/bin/sh", "rpmlib(", "rtld("))}

    def improvements(self, name):
        return set(self.query(name, "--recommends").split()) | set(self.query(name, "--suggests").split())

    def build_needs(self):
        return set(run("rpmspec", "--query", "--buildrequires", self.spec).splitlines())

    def script(self, name, event):
        """Returns the shell script of an event, and its arguments. There is a list for each script that runs then."""
        tags = {"install": [("POSTIN", "1")], "upgrade": [("POSTIN", "2"), ("PREUN", "1"), ("POSTUN", "1")],
                "remove": [("PREUN", "0"), ("POSTUN", "0")]}
        return [(self.query(name, "--queryformat", f"%{{{tag}}}"), argument) for tag, argument in tags[event]]


class PacmanPackages(Elsewhere):
    def build(self, built):
        # The user nobody may enter /tmp, but perhaps not the folders of the tree and of other temporary files.
        with tempfile.TemporaryDirectory(prefix="kovra-makepkg-", dir="/tmp") as place:
            self.make(built, pathlib.Path(place))
        return {re.match(r"(.+?)-\d", path.name)[1]: path for path in self.folder.glob("*.pkg.tar*")}

    def make(self, built, place):
        """Runs makepkg in this folder, on a copy of the build."""
        for file in (built.tree / "packaging/arch").iterdir():
            shutil.copy(file, place)
        source = place / f"src/ble-kovra-{built.version}"
        shutil.copytree(built.packages / "source", source, symlinks=True)
        build = source / built.build.name
        (place / "src/build").symlink_to(build)
        for script in build.rglob("cmake_install.cmake"):
            script.write_text(script.read_text().replace(str(built.packages / "source"), str(source)))
        # makepkg refuses to run as root, and starts a fakeroot of its own.
        environment = without_fakeroot()
        as_user = []
        if is_root():
            run("chown", "--recursive", "nobody:nogroup", place, env=environment)
            as_user = ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"]
        run(*as_user, "makepkg", "--repackage", "--nodeps", "--noconfirm", cwd=place, env=environment)
        for package in place.glob("*.pkg.tar*"):
            shutil.copy(package, self.folder)

    def pacman(self, root, *what):
        settings = self.folder / "pacman.conf"
        settings.write_text("[options]\nArchitecture = auto\nSigLevel = Never\nLocalFileSigLevel = Never\n")
        folders = (f"--{option}={root}/var/{option}" for option in ("dbpath", "cachedir", "gpgdir", "hookdir"))
        (root / "var/dbpath").mkdir(parents=True, exist_ok=True)
        # --nodeps twice ignores the names of needed packages, too. In an empty folder there is no shell for scripts.
        as_root("pacman", "--root", root, *folders, f"--logfile={root}/var/log", "--config", settings, "--noconfirm",
                "--noscriptlet", "--nodeps", "--nodeps", *what)

    def install(self, root):
        self.pacman(root, "--upgrade", *self.archives.values())

    def remove(self, root):
        self.pacman(root, "--remove", *NAMES)

    def fields(self, name, field):
        return re.findall(rf"^{field} = (.*)$", (self.places[name] / ".PKGINFO").read_text(), re.M)

    def version(self, name):
        return self.fields(name, "pkgver")[0].rpartition("-")[0]

    def needs(self, name):
        return set(self.fields(name, "depend"))

    def improvements(self, name):
        return {each.partition(":")[0] for each in self.fields(name, "optdepend")}

    def build_needs(self):
        return set(self.fields("ble-kovra", "makedepend"))

    def script(self, name, event):
        script = self.places[name] / ".INSTALL"
        functions = {"install": ["post_install"], "upgrade": ["post_upgrade"], "remove": ["pre_remove", "post_remove"]}
        text = script.read_text() if script.exists() else ""
        return [(f"{text}\n{function}\n" if text else "", "") for function in functions[event]]
