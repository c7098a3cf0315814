"""A scenario of a downgrade while a pad is muted, to the helper that ran as root, and of the upgrade back."""

import os
import signal

from laptop import FLAG, HELPER, flag, run
from running import scenario
from waiting import check, now, wait_for
from walls_of_the_helper import (drop_in, expect_granted, expect_taken_over, helper_process,
                                 mute_by_the_helper_of_root, user_of_helper)


@scenario("A downgrade to the helper that ran as root keeps the pad muted, and it is unmuted after the mouse. If that "
          "helper is killed and nothing unmutes its pad, the upgrade does.")
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
    application.kill()
    one.unplug()

    other, application, mouse = mute_by_the_helper_of_root(laptop)
    with drop_in("[Service]\nRestart=no\nExecStopPost=\n"):
        os.kill(helper_process(), signal.SIGKILL)
        wait_for(lambda: run("systemctl", "show", "-P", "ActiveState", HELPER).strip() == "failed", "the unit to fail")
    laptop.expect_dead(other)
    since = now()
    laptop.upgrade_helper()
    for device in other.inputs:
        laptop.inhibitions.wait(device, True, laptop.inhibitions.wait(device, False, since))
    expect_taken_over(laptop, other, application, mouse)
    return measured
