"""Scenarios in which the helper or the login manager hangs, the helper crashes, or a script is named ble-kovra."""

import os
import signal

from laptop import HELPER, HELPER_PROCESSES, helper_process, run
from people import ANNA, BORIS
from running import scenario
from waiting import check, now, wait_for

# The limit in seconds until the watchdog has killed the helper and ExecStopPost has unmuted the pads.
LONGEST_HANG = 10.0


@scenario("When the helper hangs while the pad is muted, the pad is unmuted within 10 s, and muted again by a new helper.")
def helper_hangs(laptop):
    one = laptop.plug_pad(twin=True)
    laptop.mute(one)
    since = now()
    os.kill(helper_process(), signal.SIGSTOP)
    back = max(laptop.inhibitions.wait(device, False, since) for device in one.inputs)
    check(back - since <= LONGEST_HANG, f"back only after {back - since:.1f} s")
    laptop.expect_dead(one)
    return f"back after {back - since:.1f} s"


@scenario("A helper that has nothing muted is not ended for hanging, and has no watchdog.")
def idle_helper_hangs(laptop):
    laptop.install()
    run("systemctl", "restart", HELPER)
    helper = helper_process()
    watchdog = run("systemctl", "show", "-P", "WatchdogUSec", HELPER).strip()
    check(watchdog in ["0", "infinity"], f"the watchdog is on: {watchdog}")
    check(helper_process() == helper, "the helper was ended")


@scenario("A helper that crashes again and again is started after growing delays, with one line for each.")
def helper_crashes(laptop):
    laptop.install()
    run("systemctl", "restart", HELPER)
    for _ in range(3):
        crashed = helper_process()
        os.kill(crashed, signal.SIGSEGV)
        since = now()
        wait_for(lambda: has_restarted(crashed), "the helper to start again")
    took = now() - since
    lines = run("journalctl", "--no-pager", "-u", HELPER, "-g", "ended early several times in a row").splitlines()
    run("systemctl", "restart", HELPER)
    check(took >= 4, f"it started after {took:.1f} s")
    check(len(lines) == 1, f"the log says: {lines}")
    return f"started after {took:.1f} s"


def has_restarted(crashed):
    # systemd removes the control group while it waits before a restart.
    return HELPER_PROCESSES.exists() and helper_process() not in [0, crashed] and is_active()


def is_active():
    return run("systemctl", "show", "-P", "ActiveState", HELPER).strip() == "active"


@scenario("While the login manager hangs, a person who switches to another terminal finds the pad alive.")
def login_manager_hangs(laptop):
    one = laptop.plug_pad()
    boris = laptop.log_in(BORIS)
    laptop.log_in(ANNA).activate()
    laptop.mute(one)
    manager = int(run("systemctl", "show", "-P", "MainPID", "systemd-logind.service"))
    os.kill(manager, signal.SIGSTOP)
    try:
        since = now()
        boris.show_console()
        measured = laptop.expect_back_at_once(since, one)
    finally:
        os.kill(manager, signal.SIGCONT)
    wait_for(boris.is_active, "Boris's session to become active")
    laptop.log_in(ANNA).activate()
    laptop.expect_dead(one)
    return measured


@scenario("A script with the application's name does not keep the pad muted.")
def name_alone(laptop):
    one = laptop.plug_pad()
    application, _ = laptop.mute(one)
    anna = laptop.log_in(ANNA)
    script = ANNA.home / "ble-kovra"
    script.write_text("#!/bin/sh\nsleep 1000\n:\n", encoding="utf-8")
    script.chmod(0o755)
    pid = anna.run(f"{script} </dev/null >/dev/null 2>&1 & echo $!")
    wait_for(lambda: comm(pid) == "ble-kovra", "the script to run")
    since = now()
    application.kill()
    measured = laptop.expect_back_at_once(since, one)
    os.kill(int(pid), signal.SIGKILL)
    return measured


def comm(pid):
    with open(f"/proc/{pid}/comm", encoding="utf-8") as file:
        return file.read().strip()
