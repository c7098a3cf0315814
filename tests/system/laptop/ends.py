"""Scenarios in which the helper or the application ends or is stopped, or /run is full."""

import contextlib
import itertools
import os
import pathlib
import shutil
import signal
import subprocess

from laptop import AT_ONCE, FLAG, GRACE, HELPER, flag, helper_process, run
from people import ANNA
from running import scenario
from waiting import check, now, stay_until, wait_for


@scenario("When the helper is killed the pads are unmuted, and muted again after its restart.")
def helper_killed(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = laptop.mute(one)
    since = now()
    os.kill(helper_process(), signal.SIGKILL)
    back = [laptop.inhibitions.wait(device, False, since) for device in one.inputs]
    again = [laptop.inhibitions.wait(device, True, max(back)) for device in one.inputs]
    check(flag() == "on", f"the flag is {flag()!r}")
    application.expect_running()
    laptop.expect_dead(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)
    return f"back after {max(back) - since:.2f} s, dead again after {max(again) - since:.2f} s"


@scenario("When the helper is stopped the pads are unmuted until it is started again.")
def helper_stopped(laptop):
    one = laptop.plug_pad(twin=True)
    laptop.mute(one)
    run("systemctl", "stop", HELPER)
    check(not any(one.inhibited), f"after the helper was stopped: {one.inhibited}")
    laptop.expect_alive_until(now() + AT_ONCE, one)
    run("systemctl", "start", HELPER)
    laptop.expect_dead(one)


@scenario("When the application is killed the pad is unmuted within 1 s, and the flag stays as it is.")
def application_killed(laptop):
    one = laptop.plug_pad()
    application, _ = laptop.mute(one)
    since = now()
    application.kill()
    measured = laptop.expect_back_at_once(since, one)
    check(flag() == "on", f"the flag is {flag()!r}")
    laptop.start()
    laptop.expect_dead(one)
    return measured


@scenario("What a killed application has left in the flag mutes nothing while the next one has not written yet.")
def left_word(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = laptop.mute(one)
    application.kill()
    laptop.expect_alive(one)
    # A program with the application's name, which writes nothing, like an application that has just started.
    silent = shutil.copy("/bin/sleep", ANNA.home / "ble-kovra")
    pid = int(laptop.log_in(ANNA).run(f"{silent} 1000 </dev/null >/dev/null 2>&1 & echo $!"))
    wait_for(lambda: pathlib.Path(f"/proc/{pid}/comm").read_text().strip() == "ble-kovra", "the program to run")
    # The helper looks at the flag at each event of an input device.
    mouse.unplug()
    laptop.settle()
    laptop.expect_alive_until(now() + AT_ONCE, one)
    check(flag() == "on", f"the flag is {flag()!r}")
    os.kill(pid, signal.SIGKILL)
    laptop.start(mode="always")
    laptop.expect_dead(one)


@scenario("While the application is stopped nothing changes. After SIGCONT it mutes within 1 s or unmutes the pad after "
          "2 s.")
def application_stopped(laptop):
    one = laptop.plug_pad()
    application, mouse = laptop.mute(one)
    application.stop()
    mouse.unplug()
    laptop.expect_dead_until(mouse.removed + 3, one)
    since = now()
    application.resume()
    back = laptop.inhibitions.wait(one.inputs[0], False, since) - since
    check(GRACE <= back <= GRACE + AT_ONCE, f"back {back:.2f} s after SIGCONT")
    laptop.expect_alive(one)

    application.stop()
    laptop.plug_mouse()
    laptop.expect_alive_until(now() + AT_ONCE, one)
    since = now()
    application.resume()
    dead = laptop.inhibitions.wait(one.inputs[0], True, since) - since
    check(dead <= AT_ONCE, f"dead only {dead:.2f} s after SIGCONT")
    laptop.expect_dead(one)
    return f"back {back:.2f} s and dead {dead:.2f} s after SIGCONT"


@scenario("Stopped within the grace period: the period continues, and after SIGCONT the pad is unmuted within 1 s.")
def stopped_in_grace(laptop):
    one = laptop.plug_pad()
    application, mouse = laptop.mute(one)
    mouse.unplug()
    announced = laptop.announced.wait("remove", mouse.node)
    stay_until(announced + GRACE / 2)
    application.stop()
    laptop.expect_dead_until(announced + GRACE + AT_ONCE, one)
    since = now()
    application.resume()
    return laptop.expect_back_at_once(since, one)


@contextlib.contextmanager
def full_run(what):
    """Fills /run within the `with` block: with bytes if `what` is "size", with files if it is "nr_inodes"."""
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


@scenario("Without room in /run for a record, the helper mutes no pad that it could not unmute.")
def no_room_for_records(laptop):
    one = laptop.plug_pad()
    laptop.start_and_wait_for_write()
    laptop.settle()
    anna, refusal = laptop.log_in(ANNA), f"{one.inputs[0].number} is not muted, since it cannot be recorded"
    with full_run("nr_inodes"):
        # Write the flag at once, before some process removes a file in /run and so makes room for a record.
        check(anna.succeeds(f"printf on >'{FLAG}'"), "Anna cannot write her flag")
        wait_for(lambda: refusal in run("journalctl", "-u", HELPER, "-o", "cat", "--no-pager"),
                 "the helper to have tried")
        laptop.expect_alive_until(now() + AT_ONCE, one)
    check(flag() == "on", f"the flag is {flag()!r}")


@scenario("If bytes or files fill /run while the pad is muted, the pad is unmuted all the same.")
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
