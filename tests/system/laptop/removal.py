"""Scenarios in which the packages are reinstalled or purged while a touchpad is muted."""

import os
import pathlib

from laptop import flag
from running import scenario
from waiting import check

# The files that the packages and their programs create. A purge must remove all of them.
TRACES = ["Library", "Applications", "run/ble-kovra-helper", "usr/bin/ble-kovra", "usr/libexec/ble-kovra*",
          "usr/bin/systemextensionsctl", "usr/lib/systemd/system/ble-kovra*", "etc/systemd/system/*/ble-kovra*",
          "usr/lib/tmpfiles.d/ble-kovra*", "usr/lib/sysusers.d/ble-kovra*", "usr/lib/udev/rules.d/*ble-kovra*",
          "usr/share/polkit-1/actions/*kovra*",
          "var/lib/systemd/deb-systemd-helper-*/ble-kovra*",
          "var/lib/systemd/deb-systemd-helper-*/*/ble-kovra*", "var/lib/dpkg/info/ble-kovra*"]


@scenario("A reinstallation while a pad is muted disturbs neither the application nor its flag; the pad is muted again.")
def upgrade(laptop):
    one = laptop.plug_pad()
    application, mouse = laptop.mute(one)
    laptop.reinstall()
    application.expect_running()
    check(flag() == "on", f"the flag is {flag()!r}")
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
