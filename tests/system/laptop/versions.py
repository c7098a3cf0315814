"""A scenario of a downgrade while a pad is muted, to the helper that ran as root."""

import os

from laptop import FLAG, flag
from running import scenario
from waiting import check, now
from walls_of_the_helper import expect_granted, user_of_helper


@scenario("A downgrade to the helper that runs as root keeps the pad muted for Anna, and it is unmuted after the mouse.")
def downgrade(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = laptop.mute(one)
    expect_granted(one)
    since = now()
    laptop.downgrade_helper()
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
    laptop.upgrade_helper()
    return measured
