"""Scenarios that compare the packages for other systems with those of Debian: they contain, need and do the same."""

import functools
import gzip
import os
import re
import shutil
import stat

from built import NAMES
from contents import DOCUMENTS
from elsewhere import PacmanPackages, Rpms, as_root
from root import FLAG, MANAGER, Root
from scenario import run, scenario
from waiting import check

# For each package of Debian that ours need: what the RPMs need instead, and what the packages for pacman do.
NEEDS = {
    "libacl1": ({"libacl.so.1"}, "acl"),
    "libfontconfig1": ({"libfontconfig.so.1"}, "fontconfig"),
    "libc6": ({"libc.so.6", "libm.so.6", "ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1"}, "glibc"),
    "libgcc-s1": ({"libgcc_s.so.1"}, "gcc-libs"),
    "libqt6core6": ({"libQt6Core.so.6"}, "qt6-base"),
    "libqt6gui6": ({"libQt6Gui.so.6"}, "qt6-base"),
    "libqt6dbus6": ({"libQt6DBus.so.6"}, "qt6-base"),
    "libqt6widgets6": ({"libQt6Widgets.so.6"}, "qt6-base"),
    "libstdc++6": ({"libstdc++.so.6"}, "gcc-libs"),
    "libsystemd0": ({"libsystemd.so.0"}, "systemd-libs"),
    "libudev1": ({"libudev.so.1"}, "systemd-libs"),
    "libxcb1": ({"libxcb.so.1"}, "libxcb"),
    "qt6-qpa-plugins": ({"qt6-qtbase-gui"}, "qt6-base"),
    "systemd >= 252": ({"systemd >= 252"}, "systemd>=252"),
    # Debian's packages need not name it, since every Debian has it.
    "util-linux": ({"util-linux"}, "util-linux"),
}
# The same for what improves them. None: another package contains it there, which ours need in any case.
IMPROVEMENTS = {
    "ble-kovra-helper": ("ble-kovra-helper", "ble-kovra-helper"),
    "default-logind": (None, None),
    "gnome-shell-extension-appindicator": ("gnome-shell-extension-appindicator", "gnome-shell-extension-appindicator"),
    "libcanberra0": ("libcanberra", "libcanberra"),
    "pkexec": ("polkit", "polkit"),
    "qt6-gtk-platformtheme": (None, None),
    "qt6-wayland": ("qt6-qtwayland", "qt6-wayland"),
    "udev": ("systemd-udev", None),
    "xdg-utils": ("xdg-utils", "xdg-utils"),
}
# What the packages for pacman need for the libraries in tools/packages.
LIBRARIES = {"pkg-config:libsystemd": "systemd-libs", "pkg-config:libacl": "acl", "pkg-config:libudev": "systemd-libs",
             "pkg-config:xcb": "libxcb", "pkg-config:fontconfig": "fontconfig",
             "cmake:nlohmann_json": "nlohmann-json", "cmake:Qt6": "qt6-base"}


@functools.cache
def others(built):
    return Rpms(built), PacmanPackages(built)


def relations(built, name, *fields):
    """Returns the packages in these fields, of alternatives the first, with the versions that we require ourselves."""
    text = ", ".join(filter(None, (built.field(name, field) for field in fields)))
    found = {each.split("|")[0].strip() for each in text.split(",")}
    return {"systemd >= 252" if "252" in each else re.sub(r"(t64)? \(.*", "", each) for each in found}


@scenario("The RPMs and the packages for pacman contain the same files as Debian's, with the same access rights.")
def same_files(built):
    for other in others(built):
        for name in NAMES:
            debian = {re.sub("^/lib/", "/usr/lib/", path): path for path in built.files(name) - DOCUMENTS}
            found = {}
            for path in other.files(name):
                is_license = path.startswith("/usr/share/licenses/")
                if is_license:
                    check((other.places[name] / path[1:]).read_text() == (built.tree / "LICENSE").read_text(), path)
                else:
                    # On this system rpmbuild does not compress manual pages.
                    found[f"{path}.gz" if re.search(r"/man\d/.*\.\d$", path) else path] = other.places[name] / path[1:]
            check(set(found) == set(debian), f"{type(other).__name__}: {name}: {set(found) ^ set(debian)}")
            check(len(other.files(name)) == len(found) + 1, f"{type(other).__name__}: {name} has no license")
            for path, file in found.items():
                ours = built.unpacked(name) / debian[path][1:]
                same_mode = stat.S_IMODE(file.stat().st_mode) == stat.S_IMODE(ours.stat().st_mode)
                check(same_mode, f"{type(other).__name__}: {path} has mode {file.stat().st_mode:o}")
                check(content(file) == content(ours), f"{type(other).__name__}: {path} has other contents")


def content(file):
    """Returns the content, uncompressed. Each packaging strips programs in its own way, so they are not compared."""
    data = file.read_bytes()
    if data.startswith(b"\x7fELF"):
        return b"a program"
    return gzip.decompress(data) if file.suffix == ".gz" else data


# What only one kind of package contains, apart from its own database.
OWN = re.compile(r"/usr/(share/(doc|licenses)|lib/\.build-id)(/|$)")


def placed(place, listing):
    """Returns the kind, the mode and the owner of each path that packages have put below /usr and /lib in this folder.
    find runs by the function `listing`."""
    found = {}
    for path in ("usr", "lib"):
        if (place / path).exists():
            for line in listing("find", place / path, "-printf", "%p\t%y %m %U:%G\n").splitlines():
                name, _, state = line.partition("\t")
                name = re.sub("^/lib(?=/|$)", "/usr/lib", name.removeprefix(str(place)))
                # On this system rpmbuild does not compress manual pages.
                name = re.sub(r"(/man\d/.*\.\d)$", r"\1.gz", name)
                if not OWN.match(name):
                    found[name] = state
    return found


@scenario("Installed by rpm and by pacman, they put the same files and folders in place as dpkg does, with the same "
          "access rights and owners, and after their removal no file is left.")
def same_installation(built):
    debian = Root(built, "same_installation")
    debian.install(*(built.package(name) for name in NAMES))
    wanted = placed(debian.path, run)
    check({path for path, state in wanted.items() if not state.startswith("d")} ==
          {re.sub("^/lib/", "/usr/lib/", path) for name in NAMES for path in built.files(name) - DOCUMENTS}, wanted)
    for other in others(built):
        place = built.folder / f"installed-{type(other).__name__}"
        (place / "etc").mkdir(parents=True)
        # rpm gives files of unknown users to root.
        for users in ("passwd", "group"):
            shutil.copy(f"/etc/{users}", place / "etc")
        other.install(place)
        found = placed(place, as_root)
        check(found == wanted, f"{type(other).__name__}: {set(found.items()) ^ set(wanted.items())}")
        other.remove(place)
        left = {path: state for path, state in placed(place, as_root).items() if not state.startswith("d")}
        check(not left, f"{type(other).__name__} leaves {left}")


@scenario("The RPMs and the packages for pacman have the project's version, its home page and its license.")
def same_version(built):
    metainfo = (built.tree / "packaging/org.ble_kovra.BLEKovra.metainfo.xml").read_text()
    home = re.search(r'<url type="homepage">(.*)</url>', metainfo)[1]
    rpms, pacman = others(built)
    for name in NAMES:
        for other in (rpms, pacman):
            check(other.version(name) == built.version, f"{type(other).__name__}: {name} is {other.version(name)}")
        check(rpms.query(name, "--queryformat", "%{URL} %{LICENSE}") == f"{home} MIT", "the RPM says something else")
        check(pacman.fields(name, "url") + pacman.fields(name, "license") == [home, "MIT"], "the PKGBUILD differs")


@scenario("The RPMs and the packages for pacman need the same as Debian's, and recommend the same.")
def same_needs(built):
    check(run("dpkg-query", "--show", "--showformat", "${Essential}", "util-linux") == "yes", "it is not essential")
    rpms, pacman = others(built)
    for name in NAMES:
        debian = relations(built, name, "Depends") - {"systemd"}
        debian |= {"util-linux"} if name == "ble-kovra-helper" else set()
        check(debian <= set(NEEDS), f"there is no counterpart of {debian - set(NEEDS)}")
        found, allowed = rpms.needs(name), set().union(*(NEEDS[each][0] for each in debian))
        check(found <= allowed, f"the RPM {name} also needs {found - allowed}")
        for each in debian:
            check(found & NEEDS[each][0], f"the RPM {name} does not need {NEEDS[each][0]}")
        wanted = {NEEDS[each][1] for each in debian}
        check(pacman.needs(name) == wanted, f"pacman: {name} needs {pacman.needs(name)} instead of {wanted}")
        debian = relations(built, name, "Recommends", "Suggests") - {""}
        check(debian <= set(IMPROVEMENTS), f"there is no counterpart of {debian - set(IMPROVEMENTS)}")
        for other, column in ((rpms, 0), (pacman, 1)):
            wanted = {IMPROVEMENTS[each][column] for each in debian} - {None}
            found = other.improvements(name)
            check(found == wanted, f"{type(other).__name__}: {name} recommends {found} instead of {wanted}")


@scenario("To be built, they need the libraries that tools/packages lists.")
def same_libraries(built):
    lines = (built.tree / "tools/packages").read_text().splitlines()
    listed = {words[2] for words in map(str.split, lines) if words and words[0] == "build" and len(words) == 3}
    check(listed == set(LIBRARIES), f"there is no counterpart of {listed ^ set(LIBRARIES)}")
    rpms, pacman = others(built)
    found = {each.split()[0] for each in rpms.build_needs()}
    libraries = {each for each in found if "(" in each}
    wanted = {re.sub(r"(pkg-?config|cmake):(.*)", lambda match: f"{match[1].replace('-', '')}({match[2]})", each)
              for each in listed}
    check(libraries == wanted, f"the RPMs need {libraries} instead of {wanted}")
    tools = {"cmake", "pkgconf"}
    check(found - libraries == tools | {"gcc-c++", "ninja-build"}, f"the RPMs need {found - libraries}")
    wanted = {LIBRARIES[each] for each in listed} | tools | {"ninja"}
    check(pacman.build_needs() == wanted, f"the PKGBUILD needs {pacman.build_needs()} instead of {wanted}")


class Steps:
    """Runs the packages' scripts with stand-ins for the programs that they start, and in a folder instead of /."""

    PROGRAMS = ("systemctl", "systemd-sysusers", "systemd-tmpfiles", "udevadm", "deb-systemd-helper",
                "deb-systemd-invoke", "start-stop-daemon", "helper", "start-helper")

    def __init__(self, built, name):
        self.place, self.calls = built.folder / "steps" / name, built.folder / "steps" / f"{name}.calls"
        self.programs = built.folder / "steps" / f"{name}.programs"
        for folder in (self.place / "run/systemd/system", self.programs):
            folder.mkdir(parents=True)
        self.calls.write_text("")
        for program in self.PROGRAMS:
            # A service that the administrator has disabled stays disabled.
            answer = 'case "$*" in *was-enabled*) exit "$DISABLED" ;; esac'
            (self.programs / program).write_text(f'#!/bin/sh\necho "{program} $*" >>"{self.calls}"\n{answer}\n')
            (self.programs / program).chmod(0o755)

    def run(self, text, *arguments, is_disabled=False):
        for old, new in (('"${DPKG_ROOT:-/}"', f'"{self.place}"'), ("cd /\n", f'cd "{self.place}"\n'),
                         ("[ -d /run/", f"[ -d {self.place}/run/"), ('-x "/usr/bin/deb-systemd-helper"', "-n yes"),
                         ("/usr/libexec/ble-kovra/start-helper", "start-helper"),
                         ("/usr/libexec/ble-kovra-helper", "helper")):
            text = text.replace(old, new)
        # The script must not leave the folder.
        check(re.findall(r"^\s*cd (.*)$", text, re.M) in ([], [f'"{self.place}"']), text)
        run("sh", "-e", "-c", text, "script", *arguments, cwd=self.place,
            env={**os.environ, "PATH": f"{self.programs}:/usr/sbin:/usr/bin:/sbin:/bin",
                 "DISABLED": str(int(is_disabled))})

    def taken(self):
        """Returns the commands that ran, by the names that they have outside Debian."""
        found = []
        for line in self.calls.read_text().splitlines():
            line = line.replace("deb-systemd-invoke restart", "systemctl try-restart")
            line = line.replace("deb-systemd-invoke", "systemctl").replace("systemctl --system", "systemctl")
            line = line.replace("deb-systemd-helper enable", "systemctl --no-reload enable")
            line = line.replace("deb-systemd-helper purge", "systemctl --no-reload disable")
            # Only Debian starts the helper without systemd. Only Debian has had a version that ran as root.
            if not line.startswith(("deb-systemd-helper ", "start-stop-daemon ")) and not line.endswith("--create -"):
                found.append(line)
        self.calls.write_text("")
        return found

    def listing(self):
        return {str(path.relative_to(self.place)) for path in self.place.rglob("*")}


def debian_scripts(built, event):
    control = built.folder / "control"
    if not control.exists():
        run("dpkg-deb", "--control", built.package("ble-kovra-helper"), control)
    scripts = {"install": [("postinst", ["configure", ""])],
               "upgrade": [("prerm", ["upgrade", "2"]), ("postrm", ["upgrade", "2"]), ("postinst", ["configure", "1"])],
               "remove": [("prerm", ["remove"]), ("postrm", ["remove"]), ("postrm", ["purge"])]}
    return [((control / script).read_text(), arguments) for script, arguments in scripts[event]]


@scenario("When they are installed, upgraded or removed, they do the same as Debian's, in the same order.")
def same_steps(built):
    for event in ("install", "upgrade", "remove"):
        debian = Steps(built, f"debian-{event}")
        for script, arguments in debian_scripts(built, event):
            debian.run(script, *arguments, is_disabled=event == "upgrade")
        wanted = debian.taken()
        check(len(wanted) >= 5, f"Debian's do only {wanted}")
        if event == "remove":
            # Debian's disable the service when they are purged, after the removal. Others must do that before.
            reload = next(step for step in wanted if "daemon-reload" in step)
            wanted.remove(reload)
            wanted.append(reload)
        for other in others(built):
            steps = Steps(built, f"{type(other).__name__}-{event}")
            for script, argument in other.script("ble-kovra-helper", event):
                steps.run(script, argument)
            found = steps.taken()
            check(found == wanted, f"{type(other).__name__}: {event}: {found} instead of {wanted}")
            check(not any(script for script, _ in other.script("ble-kovra", event) if script != "(none)"),
                  f"{type(other).__name__}: the application's package has a script")


@scenario("When they are removed, they leave the same as Debian's when purged: other programs' files, and no flag.")
def same_remains(built):
    def removed(name, scripts, is_ours):
        steps = Steps(built, name)
        flag, manager, pads = steps.place / FLAG, steps.place / MANAGER, steps.place / "run/ble-kovra-helper/pads"
        for folder in (flag.parent, manager.parent, pads):
            folder.mkdir(parents=True)
        for suffix in ("", ".new", ".left.1000", ".odd.7"):
            flag.with_name(f"state{suffix}").touch()
        manager.symlink_to("/usr/libexec/ble-kovra/driver-manager" if is_ours else "/opt/another")
        if not is_ours:
            (pads / "input7").touch()
            (flag.parent.parent / "other").touch()
        for script, arguments in scripts:
            steps.run(script, *arguments)
        return steps.listing()

    for is_ours in (True, False):
        wanted = removed(f"debian-remains-{is_ours}", debian_scripts(built, "remove"), is_ours)
        check(("Applications" in wanted, "Library" in wanted) == (not is_ours, not is_ours), f"Debian's leave {wanted}")
        for other in others(built):
            scripts = [(text, [argument]) for text, argument in other.script("ble-kovra-helper", "remove")]
            found = removed(f"{type(other).__name__}-remains-{is_ours}", scripts, is_ours)
            check(found == wanted, f"{type(other).__name__} leaves {found} instead of {wanted}")
