"""Scenarios of a change of the package's version while a pad is muted: from and to the helper that ran as root."""

import os

from laptop import FLAG, HELPER, flag, run
from running import scenario
from waiting import check, now
from walls_of_the_helper import expect_granted, mute_by_the_helper_of_root, user_of_helper


def log_since(cursor):
    return run("journalctl", "-u", HELPER, "--after-cursor", cursor, "-o", "cat", "--no-pager")


def log_cursor():
    return run("journalctl", "-u", HELPER, "-n", "1", "--show-cursor", "--no-pager").rpartition("cursor: ")[2].strip()


@scenario("During the upgrade from the helper that ran as root, that helper can unmute its pad at once.")
def upgrade_unmutes_at_once(laptop):
    one, _, mouse = mute_by_the_helper_of_root(laptop)
    cursor = log_cursor()
    laptop.reinstall()
    expect_granted(one)
    log = log_since(cursor)
    check("cannot be unmuted" not in log, log[-500:])
    laptop.expect_dead(one)
    mouse.unplug()
    return laptop.expect_back_after_grace(mouse, one)


@scenario("A downgrade to the helper that runs as root keeps the pad muted for Anna, and it is unmuted after the mouse.")
def downgrade(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = laptop.mute(one)
    expect_granted(one)
    since = now()
    laptop.install_older_helper()
    for device in one.inputs:
        laptop.inhibitions.wait(device, True, laptop.inhibitions.wait(device, False, since))
    check(user_of_helper() == 0, f"the helper runs as {user_of_helper()}")
    owners = {path: os.stat(path).st_uid for path in [os.path.dirname(FLAG), FLAG]}
    check(not any(owners.values()), f"the flag's files belong to {owners}")
    application.expect_running()
    check(flag() == "on", f"the flag is {flag()!r}")
    laptop.expect_dead(one)
    mouse.unplug()
    measured = laptop.expect_back_after_grace(mouse, one)
    laptop.reinstall()
    return measured
