"""Scenarios in which the packages are installed, upgraded, removed and purged."""

import os
import stat
import subprocess

from built import NAMES
from root import FLAG, MANAGER, Root
from scenario import run, scenario
from waiting import check, now


def installed(built, name):
    root = Root(built, name)
    before = root.listing()
    root.install(*(built.package(each) for each in NAMES))
    return root, before


@scenario("After installation the flag and its folder are the helper's user's, and the driver's manager is in place.")
def install(built):
    root, _ = installed(built, "install")
    flag = root.path / FLAG
    check(flag.read_text() == "off", f"the flag is {flag.read_text()!r}")
    records = root.path / "run/ble-kovra-helper"
    helper = root.helper_user()
    for path, owner, mode in ((flag, helper, 0o644), (flag.parents[0], helper, 0o755), (flag.parents[1], (0, 0), 0o755),
                              (flag.parents[2], (0, 0), 0o755), (records, helper, 0o755),
                              (records / "pads", helper, 0o700)):
        found = path.lstat()
        check((found.st_uid, found.st_gid) == owner, f"{path} belongs to {found.st_uid}:{found.st_gid}")
        check(stat.S_IMODE(found.st_mode) == mode, f"{path} has mode {found.st_mode:o}")
    manager = root.path / MANAGER
    check(manager.is_symlink(), "the manager is missing")
    program = root.path / os.readlink(manager)[1:]
    check(os.access(program, os.X_OK), f"the manager points to {program}")
    wants = root.path / "etc/systemd/system/multi-user.target.wants/ble-kovra-helper.service"
    check(wants.is_symlink(), "the helper is not started at boot")


@scenario("Folders and files that exist already keep their access rights and their contents.")
def beside_others(built):
    root = Root(built, "beside_others")
    library, bundle = root.path / "Library", root.path / MANAGER
    library.mkdir(mode=0o755)
    library.chmod(0o2755)
    bundle.mkdir(parents=True)
    (bundle / "kept").touch()
    root.install(*(built.package(each) for each in NAMES))
    check(stat.S_IMODE(library.stat().st_mode) == 0o2755, f"the folder has mode {library.stat().st_mode:o}")
    check((bundle / "kept").exists(), "the file in the manager's folder was removed")
    check((root.path / FLAG).read_text() == "off", "the flag is missing")


@scenario("An upgrade leaves the flag alone: its inode, time, text and access rights, and the state of other users.")
def upgrade(built):
    root, _ = installed(built, "upgrade")
    flag = root.path / FLAG
    left = flag.with_name("state.left.1000")
    left.write_text("on")
    flag.write_text("on")
    # If the flag has an access control list, the group bits of the mode are the mask of the list.
    flag.chmod(0o664)
    before = [(os.stat(path), path.read_text()) for path in (flag, left)]
    root.install(*(root.newer(name) for name in NAMES))
    after = [(os.stat(path), path.read_text()) for path in (flag, left)]
    for (old, old_text), (new, new_text) in zip(before, after):
        check(new_text == old_text, f"its text is {new_text!r}")
        kept = (new.st_ino, new.st_mtime_ns, new.st_mode) == (old.st_ino, old.st_mtime_ns, old.st_mode)
        check(kept, f"{old} became {new}")
    check((root.path / MANAGER).is_symlink(), "the manager is missing")


@scenario("The application's package has no maintainer scripts, which could disturb a running program.")
def no_scripts(built):
    root, _ = installed(built, "no_scripts")
    found = {path.name for path in (root.path / "var/lib/dpkg/info").glob("ble-kovra.*")}
    check(found == {"ble-kovra.list", "ble-kovra.md5sums"}, f"there are {found}")


@scenario("Removing the packages leaves the flag with its folder, as data, but no link to the removed manager.")
def remove(built):
    root, _ = installed(built, "remove")
    root.remove(*NAMES)
    check((root.path / FLAG).read_text() == "off", "the flag was removed")
    check(not (root.path / "Applications").exists(), "the folder of the manager remains")
    check(not (root.path / "usr").exists(), f"left are {root.listing()}")
    root.install(*(built.package(each) for each in NAMES))
    check((root.path / MANAGER).is_symlink(), "the manager was not installed again")


@scenario("Purging the packages leaves nothing: no flag, no user's state, no folder, no link of a service.")
def purge(built):
    root, before = installed(built, "purge")
    for name in ("state.left.1000", "state.new"):
        (root.path / FLAG).with_name(name).write_text("on")
    # If a hand-over finds a folder where it needs a file, it renames the folder to a name like these.
    for name in ("state.odd.7", "state.new.odd.8", "state.left.1000.odd.9"):
        (root.path / FLAG).with_name(name).mkdir()
        (root.path / FLAG).with_name(name).joinpath("something").touch()
    root.purge(*NAMES)
    left = root.listing() - before - {"run"}
    check(not left, f"left are {left}")
    check(root.helper_user()[0] < 1000, "the account of the helper's user was removed")


@scenario("Removing the packages first and purging them later leaves nothing either.")
def purge_later(built):
    root, before = installed(built, "purge_later")
    root.remove(*NAMES)
    root.purge(*NAMES)
    left = root.listing() - before - {"run"}
    check(not left, f"left are {left}")


@scenario("A purge keeps the record of a trackpad that could not be unmuted, for the next installation.")
def purge_with_a_record(built):
    root, _ = installed(built, "purge_with_a_record")
    record = root.path / "run/ble-kovra-helper/pads/input7"
    record.touch()
    root.purge(*NAMES)
    check(record.exists(), "the record was removed")


@scenario("A purge keeps other programs' files in the same folders, and a manager that is not ours.")
def purge_beside_others(built):
    root, _ = installed(built, "purge_beside_others")
    manager = root.path / MANAGER
    manager.unlink()
    manager.symlink_to("/opt/another")
    others = [root.path / "Library/Application Support/other", root.path / "Applications/other",
              (root.path / FLAG).with_name("notes")]
    for other in others:
        other.write_text("somebody else's")
    root.purge(*NAMES)
    for other in others:
        check(other.read_text() == "somebody else's", f"{other} was removed")
    check(manager.is_symlink(), "somebody else's manager was removed")
    check(not (root.path / FLAG).exists(), "the flag remains")


@scenario("An upgrade from a version that ran as root gives the flag and what users have left to the helper's user.")
def upgrade_from_root(built):
    root, _ = installed(built, "upgrade_from_root")
    flag = root.path / FLAG
    outside = root.path / "outside"
    outside.write_text("somebody's")
    left, link = flag.with_name("state.left.1000"), flag.with_name("state.left.1001")
    left.write_text("on")
    link.symlink_to(outside)
    for path in (flag.parent, flag, left, root.path / "run/ble-kovra-helper", root.path / "run/ble-kovra-helper/pads"):
        os.chown(path, 0, 0)
    root.install(root.newer("ble-kovra-helper"))
    for path in (flag.parent, flag, left, root.path / "run/ble-kovra-helper", root.path / "run/ble-kovra-helper/pads"):
        found = path.lstat()
        check((found.st_uid, found.st_gid) == root.helper_user(), f"{path} belongs to {found.st_uid}:{found.st_gid}")
    check(outside.stat().st_uid == 0, "a link was followed")
    check((flag.read_text(), left.read_text()) == ("off", "on"), "the flags have other texts")


@scenario("In a folder that is the helper's user's already, no file of root's is given to that user by name.")
def upgrade_among_links(built):
    root, _ = installed(built, "upgrade_among_links")
    left = (root.path / FLAG).with_name("state.left.1000")
    left.write_text("root's")
    root.install(root.newer("ble-kovra-helper"))
    check(left.stat().st_uid == 0, f"the file belongs to {left.stat().st_uid}")


@scenario("A downgrade to a version that ran as root gives root the folder of the records, and follows no link there.")
def downgrade_to_root(built):
    root, _ = installed(built, "downgrade_to_root")
    records = root.path / "run/ble-kovra-helper"
    root.install(root.newer("ble-kovra-helper"))
    check(records.stat().st_uid == root.helper_user()[0], "an upgrade gives the records to root")
    outside = root.path / "outside"
    outside.mkdir()
    os.chown(outside, *root.helper_user())
    (records / "pads").rename(root.path / "records")
    (records / "pads").symlink_to(outside)
    root.install(root.helper_of_root())
    for path in (records, records / "pads"):
        check(path.lstat().st_uid == 0, f"{path} belongs to {path.lstat().st_uid}")
    check(outside.stat().st_uid == root.helper_user()[0], "a link was followed")


@scenario("Installation changes the owner of an existing flag folder to the helper's user.")
def folder_made_by_hand(built):
    root = Root(built, "by_hand")
    folder = (root.path / FLAG).parent
    folder.mkdir(parents=True)
    folder.chmod(0o777)
    os.chown(folder, 1000, 1000)
    root.install(*(built.package(each) for each in NAMES))
    found = folder.lstat()
    mode = stat.S_IMODE(found.st_mode)
    check((found.st_uid, mode) == (root.helper_user()[0], 0o755), f"its owner is {found.st_uid}, its mode {mode:o}")


STARTER = "/usr/libexec/ble-kovra/start-helper"


def start_service(built, name, invoke):
    """Runs the part of postinst that starts the service, with the shell command `invoke` as deb-systemd-invoke.

    Returns the output and the duration in seconds.
    """
    root, _ = installed(built, name)
    script = (root.path / "var/lib/dpkg/info/ble-kovra-helper.postinst").read_text()
    programs, state = built.folder / "programs", root.path / "state"
    script = "set -e\n" + script[script.index("# Starts the service"):].replace("/run/systemd/system", "/run")
    script = script.replace(STARTER, str(programs / "start-helper"))
    environment = {**root.environment(), "DPKG_ROOT": ""}
    starter = (root.path / STARTER[1:]).read_text()
    (programs / "start-helper").write_text(starter.replace("PATH=/usr/sbin", f"PATH={programs}:/usr/sbin"))
    (programs / "start-helper").chmod(0o755)
    state.write_text("before")
    for program, text in (("deb-systemd-invoke", invoke.format(state=state)),
                          ("systemctl", f'case $* in *InvocationID*) cat {state} ;; *) echo "Cannot start" ;; esac'),
                          ("journalctl", 'case $* in *INVOCATION_ID=after*) echo "the reason" ;; esac')):
        (programs / program).write_text(f"#!/bin/sh\n{text}\n")
        (programs / program).chmod(0o755)
    begun = now()
    done = subprocess.run(["sh", "-c", script, "postinst", "configure", ""], env=environment, capture_output=True,
                          text=True, timeout=60)
    for program in ["journalctl", "start-helper"]:
        (programs / program).unlink()
    check(done.returncode == 0, f"it ends with {done.returncode}: {done.stderr}")
    return done.stdout + done.stderr, now() - begun


@scenario("The installation does not wait for a helper that cannot start: it prints the reason and ends.")
def start_without_success(built):
    output, took = start_service(built, "no_success", "echo after >{state}; exec sleep 30")
    check(output.startswith("ble-kovra-helper cannot start: the reason\n"), f"it prints {output!r}")
    check(took < 10, f"it took {took:.1f} s")


@scenario("The installation waits for a helper that starts, and prints nothing, whatever its former process said.")
def start_with_success(built):
    output, took = start_service(built, "success", "exec sleep 1")
    check(output == "", f"it prints {output!r}")
    check(took >= 1, f"it took only {took:.1f} s")


@scenario("Before the removal the helper is stopped, however it was started, its touchpads are unmuted, and its right "
          "to mute them ends.")
def remove_running(built):
    calls = built.folder / "calls"
    helper = built.folder / "helper"
    helper.write_text(f"#!/bin/sh\necho helper $* >>{calls}\n")
    helper.chmod(0o755)
    root, _ = installed(built, "remove_running")
    script = (root.path / "var/lib/dpkg/info/ble-kovra-helper.prerm").read_text()
    script = script.replace("/usr/libexec/ble-kovra-helper", str(helper))
    script = script.replace("start-stop-daemon", f"echo >>{calls} start-stop-daemon")
    stop = f"start-stop-daemon --stop --quiet --oknodo --retry=TERM/5/KILL/5 --exec {helper}"
    for action, wanted in (("upgrade", []), ("remove", [stop, "helper --release", "helper --grant root"])):
        calls.write_text("")
        run("sh", "-c", script, "prerm", action, env={**root.environment(), "DPKG_ROOT": ""})
        check(calls.read_text().splitlines() == wanted, f"{action}: {calls.read_text()}")
