"""Scenarios of the helper's user account: what it can access, and how it gets its rights."""

import contextlib
import os
import pathlib
import pwd
import shutil
import signal
import stat

import inside
from accounting import users_of
from laptop import AT_ONCE, HELPER, helper_process, run
from running import scenario
from waiting import Failed, check, now, wait_for

USER = "_ble-kovra-helper"
DROP_INS = pathlib.Path("/run/systemd/system", HELPER + ".d")
SCRIPT, OUTPUT = pathlib.Path("/run/kovra-attempts"), pathlib.Path("/run/kovra-attempts.out")
ERRORS = OUTPUT.with_suffix(".errors")
INSTEAD = f"""[Service]
Type=oneshot
Restart=no
ExecStart=
ExecStart=/bin/sh {SCRIPT}
StandardOutput=append:{OUTPUT}
StandardError=append:{ERRORS}
"""
ATTEMPTS = """
attempt() {
    what=$1
    shift
    if timeout 30 "$@" </dev/null >/dev/null; then echo "$what"; fi
}
attempt "start a service" systemd-run --wait /usr/bin/touch /etc/kovra-escaped
attempt "start a service over systemd's own socket" python3 -c 'import socket
socket.socket(socket.AF_UNIX).connect("/run/systemd/private")'
attempt "ask the login manager over the system bus" \\
    busctl call org.freedesktop.login1 /org/freedesktop/login1 org.freedesktop.login1.Manager ListSeats
attempt "write into /etc" touch /etc/kovra-written
attempt "write into the folder above the flag's" touch "/Library/Application Support/kovra-written"
attempt "mute a mouse" sh -c "echo 1 >/sys/class/input/MOUSE/inhibited"
attempt "write into the flag's folder" sh -c 'touch "$1" && rm "$1"' sh "/Library/Application Support/ble-kovra/tried"
attempt "record a pad" sh -c 'touch "$1" && rm "$1"' sh /run/ble-kovra-helper/pads/tried
attempt "write to a pad" sh -c "echo 0 >/sys/class/input/PAD/inhibited"
/usr/bin/python3 -B INSIDE
"""
OWN = ["write into the flag's folder", "record a pad", "write to a pad"]


def helpers_user():
    """Returns the UID of the helper's user account."""
    try:
        return pwd.getpwnam(USER).pw_uid
    except KeyError:
        raise Failed(f"there is no user {USER}") from None


def helpers_group():
    return pwd.getpwnam(USER).pw_gid


def user_of_helper():
    return os.stat(f"/proc/{helper_process()}").st_uid


@contextlib.contextmanager
def drop_in(text):
    """Adds these settings to the helper's unit within the `with` block."""
    DROP_INS.mkdir(parents=True)
    (DROP_INS / "kovra.conf").write_text(text)
    run("systemctl", "daemon-reload")
    try:
        yield
    finally:
        (DROP_INS / "kovra.conf").unlink()
        DROP_INS.rmdir()
        run("systemctl", "daemon-reload")


def inside_the_walls(script):
    """Runs a shell script in place of the helper, with all restrictions of its unit. Returns its lines of output."""
    SCRIPT.write_text(script)
    for file in [OUTPUT, ERRORS]:
        file.unlink(missing_ok=True)
    with drop_in(INSTEAD):
        run("systemctl", "restart", HELPER)
    run("systemctl", "restart", HELPER)
    return OUTPUT.read_text().splitlines()


def open_to_everybody():
    """Permits each user what inside.py attempts. Returns a copy of it that everybody may read."""
    for folder in [inside.OPEN, inside.HOME, inside.TEMPORARY, inside.MODULES, inside.OPEN_GROUP]:
        pathlib.Path(folder).mkdir(parents=True)
        os.chmod(folder, 0o777)
    for folder in [inside.HOME, inside.MODULES]:
        pathlib.Path(folder, "file").touch()
    os.chmod(inside.OPEN_SETTING, 0o666)
    os.chmod(shutil.copy("/usr/bin/id", inside.OPEN), 0o4755)
    return shutil.copy(inside.__file__, inside.OPEN)


def input_of(mouse):
    """Returns the name of the mouse's input device in sysfs, such as input7."""
    found = wait_for(lambda: [path.name for path in pathlib.Path("/sys/class/input").glob("input*")
                              if f"/{mouse.node}/" in os.path.realpath(path)], "the mouse's input device")
    return found[0]


def rights(device):
    """Returns the UID, the GID and the mode of the attribute "inhibited" of an input device."""
    found = os.stat(f"/sys/class/input/{device}/inhibited")
    return found.st_uid, found.st_gid, stat.S_IMODE(found.st_mode)


def expect_granted(pad):
    for device in pad.inputs:
        found = rights(device.number)
        check(found == (0, helpers_group(), 0o664), f"{device.name} has {found}")


@scenario("From inside its unit the helper writes its own files and the built-in pads, and reaches nothing else: no "
          "other folder, device, user, namespace or network. Its user could reach all of that outside.")
def attempts_inside(laptop):
    one = laptop.plug_pad(twin=True)
    mouse = input_of(laptop.plug_mouse())
    laptop.install()
    laptop.settle()
    run("systemctl", "restart", HELPER)
    program = open_to_everybody()
    as_user = ["setpriv", f"--reuid={USER}", f"--regid={USER}", "--clear-groups"]
    outside = run(*as_user, "python3", "-B", program).splitlines()
    check(outside == list(inside.ATTEMPTS), f"outside the unit only these attempts succeeded: {outside}")
    script = ATTEMPTS.replace("MOUSE", mouse).replace("PAD", one.inputs[0].number).replace("INSIDE", program)
    succeeded = inside_the_walls(script)
    check(succeeded == OWN, f"the attempts that succeeded: {succeeded}; errors: {ERRORS.read_text()[-1500:]}")
    written = [str(path) for path in pathlib.Path("/etc").glob("kovra-*")]
    check(not written, f"there are {written}")
    laptop.expect_alive(one)


@scenario("udev gives the helper's group the built-in pad and its twin, no external pad and no mouse.")
def granting(laptop):
    laptop.install()
    user = helpers_user()
    one, mouse = laptop.plug_pad(twin=True), input_of(laptop.plug_mouse())
    external = laptop.plug_pad("Kovra Bluetooth Pad", bus=0x05)
    laptop.settle()
    expect_granted(one)
    for device in [mouse, external.inputs[0].number]:
        check(rights(device) == (0, 0, 0o644), f"a mouse or an external pad was given away: {rights(device)}")
    check(user_of_helper() == user, f"the helper runs as {user_of_helper()}")


@scenario("A pad that is plugged while the mouse is there is muted, and the helper never finds its right missing.")
def right_in_time(laptop):
    _, mouse = laptop.mute()
    for number in range(4):
        one = laptop.plug_pad(f"PNP0C50:00 06CB:CD8{number}", product=0xcd80 + number, twin=True)
        laptop.expect_dead(one)
    log = run("journalctl", "-u", HELPER, "-o", "cat", "--no-pager")
    check("cannot be muted" not in log, log[-500:])
    check(user_of_helper() == helpers_user(), f"the helper runs as {user_of_helper()}")
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)


@scenario("When the helper is killed and not started again, its unit alone unmutes the pads, as the helper's user.")
def released_by_the_unit(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = laptop.mute(one)
    with drop_in("[Service]\nRestart=no\n"), users_of("ble-kovra-helper") as ended:
        since = now()
        os.kill(helper_process(), signal.SIGKILL)
        back = max(laptop.inhibitions.wait(device, False, since) for device in one.inputs)
        # Wait for the end of two processes: the helper and the command of ExecStopPost.
        users = wait_for(lambda: len(ended()) >= 2 and ended(), "both processes to be accounted for")
        check(set(users) == {helpers_user()}, f"they ran as {users}")
        laptop.expect_alive_until(now() + AT_ONCE, one)
    run("systemctl", "start", HELPER)
    laptop.expect_dead(one)
    application.expect_running()
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)
    return f"back after {back - since:.2f} s"
