"""Prepares the laptop as PID 1: hides most of the host's units and udev rules, adds user accounts, executes systemd."""

import os
import pathlib
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "guest"))

import in_machine
from people import ADMINISTRATOR, EVERYBODY, STORED_PASSWORD

SYSTEMD = "/usr/lib/systemd/systemd"
UNITS = pathlib.Path("/usr/lib/systemd/system")
OWN_UNITS = pathlib.Path("/etc/systemd/system")

# The units that are kept. The host's other units would slow the machine down, and differ between hosts.
KEPT_UNITS = """
    sysinit.target basic.target sockets.target paths.target timers.target slices.target local-fs.target
    local-fs-pre.target swap.target
    multi-user.target remote-fs.target network.target nss-user-lookup.target time-set.target time-sync.target
    shutdown.target umount.target final.target reboot.target poweroff.target user.slice
    sleep.target suspend.target systemd-suspend.service
    systemd-journald.service systemd-journald.socket systemd-journald-dev-log.socket
    systemd-udevd.service systemd-udevd-control.socket systemd-udevd-kernel.socket systemd-udev-trigger.service
    dbus.service dbus.socket dbus-org.freedesktop.login1.service systemd-logind.service polkit.service
    user-runtime-dir@.service user-.slice.d
    systemd-tmpfiles-setup.service
""".split()
STARTED = ["systemd-journald.service", "systemd-udevd.service", "dbus.service", "systemd-logind.service"]
RULES = pathlib.Path("/usr/lib/udev/rules.d")
KEPT_RULES = [f"{name}.rules" for name in [
    "50-udev-default", "60-evdev", "60-input-id", "60-persistent-input", "70-mouse", "70-touchpad", "70-uaccess",
    "71-seat", "73-seat-late", "99-systemd"]]
# The machine does not need the host's files in these folders.
EMPTIED = ["/etc/systemd/system", "/etc/udev/rules.d", "/usr/lib/systemd/system-generators",
           "/usr/lib/systemd/user-generators", "/usr/lib/environment.d", "/etc/xdg/systemd/user",
           "/etc/polkit-1/rules.d", "/usr/lib/modules-load.d", "/var/log"]

TARGET = """[Unit]
Description=All that the scenarios need
Requires=basic.target
Wants=kovra-scenarios.service {started}
After=basic.target {started}
AllowIsolate=yes
"""

SERVICE = """[Unit]
Description=The scenarios
After=systemd-logind.service systemd-udevd.service

[Service]
ExecStart=/usr/bin/python3 -B "{program}"
Environment=LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin
StandardOutput=tty
StandardError=tty
TTYPath=/dev/console
KillMode=process
"""

# Replaces the host's user@.service. The application needs only the session bus from it.
USER_SERVICE = """[Unit]
Description=The buses of the user %i
After=user-runtime-dir@%i.service dbus.service
Requires=user-runtime-dir@%i.service

[Service]
User=%i
ExecStart=/usr/bin/dbus-daemon --session --nofork --nopidfile --address=unix:path=/run/user/%i/bus
Slice=user-%i.slice
"""


def keep(folder, names):
    """Mounts a tmpfs over the folder, and copies these entries of the folder into it.

    A link to another of them stays a link: systemd refuses a copy of a unit under another name.
    """
    contents, links = {}, {}
    for name in names:
        for path in [folder / name, *(folder / name).glob("*")]:
            if path.is_symlink() and os.readlink(path) in names:
                links[path] = os.readlink(path)
            elif path.is_file():
                contents[path] = path.read_bytes()
    empty(folder)
    for path, content in contents.items():
        path.parent.mkdir(exist_ok=True)
        path.write_bytes(content)
    for path, target in links.items():
        path.symlink_to(target)


def empty(folder, mode="0755"):
    in_machine.mount("tmpfs", folder, f"mode={mode}")


def write_units():
    (OWN_UNITS / "kovra.target").write_text(TARGET.format(started=" ".join(STARTED)))
    (OWN_UNITS / "default.target").symlink_to("kovra.target")
    program = pathlib.Path(__file__).resolve().with_name("main.py")
    (OWN_UNITS / "kovra-scenarios.service").write_text(SERVICE.format(program=program))
    (OWN_UNITS / "user@.service").write_text(USER_SERVICE)
    sockets = OWN_UNITS / "sockets.target.wants"
    sockets.mkdir()
    for name in ["systemd-journald.socket", "systemd-journald-dev-log.socket", "systemd-udevd-control.socket",
                 "systemd-udevd-kernel.socket", "dbus.socket"]:
        (sockets / name).symlink_to(UNITS / name)


def write_people():
    """Adds the user accounts of the laptop, which log in without a password. One of them is polkit's administrator."""
    with open("/etc/passwd", "a", encoding="utf-8") as passwd, open("/etc/group", "a", encoding="utf-8") as group:
        for user in EVERYBODY:
            passwd.write(f"{user.name}:x:{user.uid}:{user.uid}::{user.home}:/bin/sh\n")
            group.write(f"{user.name}:x:{user.uid}:\n")
            user.home.mkdir(parents=True)
            os.chown(user.home, user.uid, user.uid)
    shadow = pathlib.Path("/etc/shadow")
    shadow.unlink()  # it may be unreadable, and so could not be appended to
    shadow.touch(mode=0o640)
    shadow.write_text(f"root:*:19000:0:99999:7:::\n{ADMINISTRATOR.name}:{STORED_PASSWORD}:19000:0:99999:7:::\n")
    pathlib.Path("/etc/polkit-1/rules.d/00-administrator.rules").write_text(
        f'polkit.addAdminRule(function() {{ return ["unix-user:{ADMINISTRATOR.name}"]; }});\n')
    pathlib.Path("/etc/pam.d/kovra-seat").write_text(
        "auth required pam_permit.so\naccount required pam_permit.so\nsession required pam_systemd.so\n")
    # The host's PAM file for user@.service may refuse accounts without a password.
    pathlib.Path("/etc/pam.d/systemd-user").write_text(
        "account required pam_permit.so\nsession required pam_systemd.so\n")


def main():
    in_machine.refuse_elsewhere(first_process=True)
    os.environ.update(PATH="/usr/sbin:/usr/bin:/sbin:/bin", LANG="C.UTF-8")
    for folder in EMPTIED:
        empty(folder)
    empty("/tmp", "1777")
    keep(UNITS, KEPT_UNITS)
    keep(RULES, KEPT_RULES)
    write_units()
    write_people()
    # A host that is a container may have these files. With the first, systemd would assume that it runs in a container.
    # The second would prevent packages from starting services.
    for mark in ["/.dockerenv", "/usr/sbin/policy-rc.d"]:
        pathlib.Path(mark).unlink(missing_ok=True)
    pathlib.Path("/etc/machine-id").write_text("6b6f7672616b6f7672616b6f7672616b\n")
    os.execv(SYSTEMD, [SYSTEMD, "--show-status=0"])


main()
