"""Scenarios in which the packages are installed, upgraded or purged, most of them while a touchpad is muted."""

import os
import pathlib
import shutil
import subprocess

from installed import MANAGER, listed
from laptop import HELPER, flag, run
from running import scenario
from waiting import check, now

# The files that the packages and their programs create. A purge must remove all of them.
TRACES = ["Library", "Applications", "run/ble-kovra-helper", "usr/bin/ble-kovra", "usr/libexec/ble-kovra*",
          "usr/bin/systemextensionsctl", "usr/lib/systemd/system/ble-kovra*", "etc/systemd/system/*/ble-kovra*",
          "usr/lib/tmpfiles.d/ble-kovra*", "usr/lib/sysusers.d/ble-kovra*", "usr/lib/udev/rules.d/*ble-kovra*",
          "usr/share/polkit-1/actions/*kovra*",
          "var/lib/systemd/deb-systemd-helper-*/ble-kovra*",
          "var/lib/systemd/deb-systemd-helper-*/*/ble-kovra*", "var/lib/dpkg/info/ble-kovra*"]


@scenario("An upgrade while a pad is muted disturbs neither the application nor its flag; the pad is muted again. The "
          "new application has the same choices.")
def upgrade(laptop):
    laptop.install_earlier()
    one = laptop.plug_pad(twin=True)
    application, mouse = laptop.mute(one)
    since = now()
    laptop.reinstall()
    for device in one.inputs:
        laptop.inhibitions.wait(device, True, laptop.inhibitions.wait(device, False, since))
    application.expect_running()
    check(flag() == "on", f"the flag is {flag()!r}")
    laptop.expect_dead(one)
    state = run("systemctl", "show", "-p", "ActiveState,UnitFileState", HELPER).split()
    check(state == ["ActiveState=active", "UnitFileState=enabled"], f"the helper's unit is {state}")

    since = now()
    application.kill()
    laptop.expect_back_at_once(since, one)
    laptop.start_again()
    laptop.expect_dead(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)


def has_ended():
    """Whether the helper has ended since its last start by a person. One that cannot start ends after half a minute."""
    state = run("systemctl", "show", "-p", "SubState,NRestarts", HELPER).split()
    return sorted(state) != ["NRestarts=0", "SubState=start"]


@scenario("The helper is purged while the pad is muted and the application runs, and installed again behind a link in "
          "the flag's way, and then in a folder that others may write: the installation and the manager say so and end. "
          "Once the way is right, the pad follows the mouse from its next plug on.")
def purged_and_installed_again(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = laptop.mute(one)
    laptop.purge("ble-kovra-helper")
    laptop.expect_alive(one)
    library, elsewhere = pathlib.Path("/Library"), pathlib.Path("/elsewhere")
    elsewhere.mkdir()
    library.symlink_to(elsewhere)
    try:
        output = laptop.reinstall()
        check("ble-kovra-helper cannot start: the flag's folder cannot be trusted: /Library" in output,
              f"the installation prints {output[-1500:]}")
        check(not has_ended(), "the installation has waited for the helper to end")
    finally:
        library.unlink()
        shutil.rmtree(elsewhere)
    library.mkdir()
    library.chmod(0o777)
    try:
        done = subprocess.run([MANAGER, "forceActivate"], stderr=subprocess.PIPE, text=True)
        reason = "ble-kovra-helper: not activated: cannot start: the flag's folder cannot be trusted: /Library"
        check(done.returncode == 1 and done.stderr.startswith(reason), f"the manager prints {done.stderr}")
        check(not has_ended(), "the manager has waited for the helper to end")
    finally:
        library.chmod(0o755)
    run("systemctl", "restart", HELPER)
    application.expect_running()
    mouse.unplug()
    laptop.expect_alive_until(laptop.announced.wait("remove", mouse.node) + 3, one)
    mouse = laptop.plug_mouse()
    laptop.expect_dead(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)


@scenario("A purge while a pad is muted unmutes the pad and leaves nothing behind.")
def purge(laptop):
    one = laptop.plug_pad(twin=True)
    application, _ = laptop.mute(one)
    laptop.purge("ble-kovra-helper")
    check(not any(one.inhibited), f"after the helper was purged: {one.inhibited}")
    groups = [os.stat(f"/sys/class/input/{device.number}/inhibited").st_gid for device in one.inputs]
    check(not any(groups), f"the pad still belongs to the groups {groups}")
    application.kill()
    laptop.purge("ble-kovra")
    left = [str(path) for pattern in TRACES for path in pathlib.Path("/").glob(pattern)]
    check(not left, f"these remain: {left}")
    laptop.expect_alive(one)


@scenario("Installing the packages is enough: the helper runs, is enabled for each boot, and is listed as enabled.")
def installing(laptop):
    laptop.purge("ble-kovra-helper", "ble-kovra")
    since = now()
    laptop.install()
    took = now() - since
    state = run("systemctl", "show", "-p", "ActiveState,UnitFileState,NRestarts", HELPER).split()
    check(state == ["NRestarts=0", "ActiveState=active", "UnitFileState=enabled"], f"the helper's unit is {state}")
    check(listed() == "[activated enabled]", f"listed as {listed()}")
    return f"installed in {took:.1f} s"
