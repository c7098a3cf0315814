"""Scenarios in which, while a pad is muted, the helper is replaced by another version, one of which ran as root."""

import os
import signal

from laptop import FLAG, HELPER, flag, helper_process, may_write_flag, run
from people import ANNA, BORIS
from running import scenario
from waiting import check, now, wait_for
from walls_of_the_helper import drop_in, expect_granted, helpers_user, user_of_helper


def log_cursor():
    return run("journalctl", "-u", HELPER, "-n", "1", "--show-cursor", "--no-pager").rpartition("cursor: ")[2].strip()


def log_since(cursor):
    return run("journalctl", "-u", HELPER, "--after-cursor", cursor, "-o", "cat", "--no-pager")


def mute_by_the_helper_of_root(laptop):
    """Makes Boris write "on" into his flag, and then mutes a pad with its twin for Anna.

    The older helper, which runs as root, must be installed. Returns the pad, Anna's application and her mouse.
    """
    one = laptop.plug_pad(twin=True)
    boris, anna = laptop.log_in(BORIS), laptop.log_in(ANNA)
    boris.activate()
    wait_for(lambda: may_write_flag(boris), "the flag to be Boris's")
    check(boris.succeeds(f"printf on >'{FLAG}'"), "Boris cannot write his flag")
    anna.activate()
    wait_for(lambda: may_write_flag(anna), "the flag to be Anna's")
    application, mouse = laptop.mute(one)
    check(user_of_helper() == 0, f"the older helper runs as {user_of_helper()}")
    return one, application, mouse


def expect_taken_over(laptop, one, application, mouse):
    user = helpers_user()
    check(user_of_helper() == user, f"the helper runs as {user_of_helper()}")
    owners = {name: os.stat(os.path.join(os.path.dirname(FLAG), name)).st_uid
              for name in [".", "state", f"state.left.{BORIS.uid}"]}
    check(set(owners.values()) == {user}, f"the flag's files belong to {owners}")
    expect_granted(one)
    application.expect_running()
    check(flag() == "on", f"the flag is {flag()!r}")
    laptop.expect_dead(one)
    boris = laptop.log_in(BORIS)
    boris.activate()
    wait_for(lambda: may_write_flag(boris), "the flag to be Boris's")
    check(flag() == "on", f"Boris has left 'on' and finds {flag()!r}")
    laptop.expect_alive(one)
    laptop.log_in(ANNA).activate()
    laptop.expect_dead(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)


@scenario("An upgrade from the helper that ran as root unmutes the pad at once, takes over the flags, and mutes the pad "
          "again.")
def upgrade_from_root(laptop):
    laptop.install_helper_of_root()
    one, application, mouse = mute_by_the_helper_of_root(laptop)
    cursor, since = log_cursor(), now()
    laptop.upgrade_helper()
    for device in one.inputs:
        laptop.inhibitions.wait(device, True, laptop.inhibitions.wait(device, False, since))
    # The older helper must have unmuted the pad when the upgrade stopped it, so that no helper logs this error.
    log = log_since(cursor)
    check("cannot be unmuted" not in log, log[-500:])
    expect_taken_over(laptop, one, application, mouse)


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
