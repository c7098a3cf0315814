"""Scenarios of what ends or fails in the middle: whatever it is, nobody is left with a dead touchpad."""

import contextlib
import itertools
import os
import pathlib
import shutil
import signal
import subprocess

from laptop import AT_ONCE, FLAG, GRACE, HELPER, flag, run
from people import ANNA
from running import scenario
from waiting import check, now, stay_until, wait_for


def helper_process():
    return int(run("systemctl", "show", "-P", "MainPID", HELPER))


@scenario("The helper is killed: the pads are given back, and muted again as soon as it is back.")
def helper_killed(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = laptop.mute(one)
    since = now()
    os.kill(helper_process(), signal.SIGKILL)
    back = [laptop.inhibitions.wait(device, False, since) for device in one.inputs]
    again = [laptop.inhibitions.wait(device, True, max(back)) for device in one.inputs]
    check(flag() == "on", f"the flag says {flag()!r}")
    application.expect_running()
    laptop.expect_dead(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)
    return f"back after {max(back) - since:.2f} s, dead again after {max(again) - since:.2f} s"


@scenario("The helper is stopped: the pads are given back for as long as it is away.")
def helper_stopped(laptop):
    one = laptop.plug_pad(twin=True)
    laptop.mute(one)
    run("systemctl", "stop", HELPER)
    check(not any(one.inhibited), f"after it has stopped: {one.inhibited}")
    laptop.expect_alive_until(now() + AT_ONCE, one)
    run("systemctl", "start", HELPER)
    laptop.expect_dead(one)


@scenario("The application is killed: the pad is back within 1 s, and the flag is left alone.")
def application_killed(laptop):
    one = laptop.plug_pad()
    application, _ = laptop.mute(one)
    since = now()
    application.kill()
    measured = laptop.expect_back_at_once(since, one)
    check(flag() == "on", f"the flag says {flag()!r}")
    laptop.start()
    laptop.expect_dead(one)
    return measured


@scenario("The application is stopped: nothing changes, whatever is plugged. It goes on and hears of it: dead within 1 s, "
          "back after the two seconds that begin then.")
def application_stopped(laptop):
    one = laptop.plug_pad()
    application, mouse = laptop.mute(one)
    application.stop()
    mouse.unplug()
    laptop.expect_dead_until(mouse.removed + 3, one)
    since = now()
    application.go_on()
    back = laptop.inhibitions.wait(one.inputs[0], False, since) - since
    check(GRACE <= back <= GRACE + AT_ONCE, f"back {back:.2f} s after it went on")
    laptop.expect_alive(one)

    application.stop()
    laptop.plug_mouse()
    laptop.expect_alive_until(now() + AT_ONCE, one)
    since = now()
    application.go_on()
    dead = laptop.inhibitions.wait(one.inputs[0], True, since) - since
    check(dead <= AT_ONCE, f"dead only {dead:.2f} s after it went on")
    laptop.expect_dead(one)
    return f"back {back:.2f} s and dead {dead:.2f} s after it went on"


@scenario("Stopped after it has heard that the mouse has gone: the two seconds run on, and when it goes on the pad is back within 1 s.")
def stopped_in_grace(laptop):
    one = laptop.plug_pad()
    application, mouse = laptop.mute(one)
    mouse.unplug()
    heard = laptop.announced.wait("remove", mouse.node)
    stay_until(heard + GRACE / 2)
    application.stop()
    laptop.expect_dead_until(heard + GRACE + AT_ONCE, one)
    since = now()
    application.go_on()
    return laptop.expect_back_at_once(since, one)


@contextlib.contextmanager
def full_run(what):
    """/run without room for another byte ("size") or another file ("nr_inodes")."""
    def limit(value):
        subprocess.run(["/bin/busybox", "mount", "-o", f"remount,{what}={value}", "/run"], check=True)

    room = os.statvfs("/run")
    before, used, little = {
        "size": (room.f_blocks * room.f_frsize, (room.f_blocks - room.f_bfree) * room.f_frsize, 1 << 18),
        "nr_inodes": (room.f_files, room.f_files - room.f_ffree, 50),
    }[what]
    filling = pathlib.Path("/run/filling")
    filling.mkdir()
    limit(used + little)
    try:
        with contextlib.suppress(OSError):
            for number in itertools.count():
                (filling / str(number)).write_bytes(b"x" * 4096 if what == "size" else b"")
        yield
    finally:
        limit(before)
        shutil.rmtree(filling)


@scenario("Without room in /run for another file nothing is muted that could not be given back.")
def no_room_for_records(laptop):
    one = laptop.plug_pad()
    laptop.start_and_hear()
    laptop.settle()
    anna, refusal = laptop.log_in(ANNA), f"{one.inputs[0].number} is not muted, since it cannot be recorded"
    with full_run("nr_inodes"):
        # At once, before anything in /run goes and makes room.
        check(anna.succeeds(f"printf on >'{FLAG}'"), "Anna cannot write her flag")
        wait_for(lambda: refusal in run("journalctl", "-u", HELPER, "-o", "cat", "--no-pager"), "the helper to have tried")
        laptop.expect_alive_until(now() + AT_ONCE, one)
    check(flag() == "on", f"the flag says {flag()!r}")


@scenario("/run fills up while the pad is muted, with bytes or with files: it is given back all the same.")
def run_fills_up(laptop):
    one = laptop.plug_pad(twin=True)
    laptop.start()
    for what in ["size", "nr_inodes"]:
        mouse = laptop.plug_mouse()
        laptop.expect_dead(one)
        laptop.settle()
        with full_run(what):
            mouse.unplug()
            laptop.expect_back_after_grace(mouse, one)
