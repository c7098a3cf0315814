"""Installing, upgrading, removing and purging."""

import os
import stat

from built import NAMES
from root import FLAG, MANAGER, Root
from scenario import run, scenario
from waiting import check


def installed(built, name):
    root = Root(built, name)
    before = root.listing()
    root.install(*(built.package(each) for each in NAMES))
    return root, before


@scenario("Installed, the flag's folder is root's alone, the flag says off, and the driver's manager is where it is looked for.")
def install(built):
    root, _ = installed(built, "install")
    flag = root.path / FLAG
    check(flag.read_text() == "off", f"the flag says {flag.read_text()!r}")
    for path in (flag, *list(flag.parents)[:3]):
        found = path.lstat()
        check((found.st_uid, found.st_gid) == (0, 0), f"{path} is {found.st_uid}'s")
        check(stat.S_IMODE(found.st_mode) == (0o644 if path == flag else 0o755), f"{path} has mode {found.st_mode:o}")
    manager = root.path / MANAGER
    check(manager.is_symlink(), "the manager is not there")
    program = root.path / os.readlink(manager)[1:]
    check(os.access(program, os.X_OK), f"the manager leads to {program}")
    wants = root.path / "etc/systemd/system/multi-user.target.wants/ble-kovra-helper.service"
    check(wants.is_symlink(), "the helper is not started at boot")


@scenario("What others have made already keeps its rights and its content.")
def beside_others(built):
    root = Root(built, "beside_others")
    library, bundle = root.path / "Library", root.path / MANAGER
    library.mkdir(mode=0o755)
    library.chmod(0o2755)
    bundle.mkdir(parents=True)
    (bundle / "kept").touch()
    root.install(*(built.package(each) for each in NAMES))
    check(stat.S_IMODE(library.stat().st_mode) == 0o2755, f"the folder has mode {library.stat().st_mode:o}")
    check((bundle / "kept").exists(), "what stood in the manager's place is gone")
    check((root.path / FLAG).read_text() == "off", "there is no flag")


@scenario("An upgrade leaves the flag alone: its file, its time, its text, its access rights, and what other users left.")
def upgrade(built):
    root, _ = installed(built, "upgrade")
    flag = root.path / FLAG
    left = flag.with_name("state.left.1000")
    left.write_text("on")
    flag.write_text("on")
    # The group's bits of a file with an access control list are the list's mask.
    flag.chmod(0o664)
    before = [(os.stat(path), path.read_text()) for path in (flag, left)]
    root.install(*(root.newer(name) for name in NAMES))
    after = [(os.stat(path), path.read_text()) for path in (flag, left)]
    for (old, old_text), (new, new_text) in zip(before, after):
        check(new_text == old_text, f"it says {new_text!r}")
        check((new.st_ino, new.st_mtime_ns, new.st_mode) == (old.st_ino, old.st_mtime_ns, old.st_mode), f"{old} became {new}")
    check((root.path / MANAGER).is_symlink(), "the manager is gone")


@scenario("The application's package has no script that could disturb the one that runs.")
def no_scripts(built):
    root, _ = installed(built, "no_scripts")
    found = {path.name for path in (root.path / "var/lib/dpkg/info").glob("ble-kovra.*")}
    check(found == {"ble-kovra.list", "ble-kovra.md5sums"}, f"there are {found}")


@scenario("Removed, the packages leave the flag and its folder, as other data, and no way to a manager that is gone.")
def remove(built):
    root, _ = installed(built, "remove")
    root.remove(*NAMES)
    check((root.path / FLAG).read_text() == "off", "the flag is gone")
    check(not (root.path / "Applications").exists(), "the way to the manager is still there")
    check(not (root.path / "usr").exists(), f"left are {root.listing()}")
    root.install(*(built.package(each) for each in NAMES))
    check((root.path / MANAGER).is_symlink(), "the manager does not come back")


@scenario("Purged, nothing is left: no flag, no user's state, no folder, no entry of a service.")
def purge(built):
    root, before = installed(built, "purge")
    for name in ("state.left.1000", "state.new"):
        (root.path / FLAG).with_name(name).write_text("on")
    # What stood in the way of a hand-over, and was put aside.
    for name in ("state.odd.7", "state.new.odd.8", "state.left.1000.odd.9"):
        (root.path / FLAG).with_name(name).mkdir()
        (root.path / FLAG).with_name(name).joinpath("something").touch()
    (root.path / "run/ble-kovra-helper/pads").mkdir(parents=True)
    root.purge(*NAMES)
    left = root.listing() - before - {"run"}
    check(not left, f"left are {left}")


@scenario("Purged in two steps, nothing is left either.")
def purge_later(built):
    root, before = installed(built, "purge_later")
    root.remove(*NAMES)
    root.purge(*NAMES)
    left = root.listing() - before
    check(not left, f"left are {left}")


@scenario("The note of a trackpad that could not be given back stays at the purge, for whoever can.")
def purge_with_a_record(built):
    root, _ = installed(built, "purge_with_a_record")
    record = root.path / "run/ble-kovra-helper/pads/input7"
    record.parent.mkdir(parents=True)
    record.touch()
    root.purge(*NAMES)
    check(record.exists(), "it is gone")


@scenario("What others keep in the same folders stays at the purge, and so does a manager of somebody else's.")
def purge_beside_others(built):
    root, _ = installed(built, "purge_beside_others")
    manager = root.path / MANAGER
    manager.unlink()
    manager.symlink_to("/opt/another")
    others = [root.path / "Library/Application Support/other", root.path / "Applications/other", (root.path / FLAG).with_name("notes")]
    for other in others:
        other.write_text("somebody else's")
    root.purge(*NAMES)
    for other in others:
        check(other.read_text() == "somebody else's", f"{other} is gone")
    check(manager.is_symlink(), "somebody else's manager is gone")
    check(not (root.path / FLAG).exists(), "the flag is there")


@scenario("A flag's folder that was made by hand becomes root's.")
def folder_made_by_hand(built):
    root = Root(built, "by_hand")
    folder = (root.path / FLAG).parent
    folder.mkdir(parents=True)
    folder.chmod(0o777)
    os.chown(folder, 1000, 1000)
    root.install(*(built.package(each) for each in NAMES))
    found = folder.lstat()
    check((found.st_uid, stat.S_IMODE(found.st_mode)) == (0, 0o755), f"it is {found.st_uid}'s, with mode {found.st_mode:o}")


@scenario("Before it is removed the helper is ended, however it was started, and its touchpads are given back.")
def remove_running(built):
    asked = built.folder / "asked"
    helper = built.folder / "helper"
    helper.write_text(f"#!/bin/sh\necho helper $* >>{asked}\n")
    helper.chmod(0o755)
    root, _ = installed(built, "remove_running")
    script = (root.path / "var/lib/dpkg/info/ble-kovra-helper.prerm").read_text()
    script = script.replace("/usr/libexec/ble-kovra-helper", str(helper))
    script = script.replace("start-stop-daemon", f"echo >>{asked} start-stop-daemon")
    for action, wanted in (("upgrade", []), ("remove", [f"start-stop-daemon --stop --quiet --oknodo --retry=TERM/5/KILL/5 --exec {helper}",
                                                        "helper --release"])):
        asked.write_text("")
        run("sh", "-c", script, "prerm", action, env={**root.environment(), "DPKG_ROOT": ""})
        check(asked.read_text().splitlines() == wanted, f"{action}: {asked.read_text()}")
