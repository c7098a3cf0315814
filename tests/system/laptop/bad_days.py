"""Scenarios in which something that BLE-kovra depends on fails or is restarted, such as the system bus or the disk."""

import contextlib
import itertools
import os
import pathlib
import shutil
import signal
import subprocess

from laptop import AT_ONCE, FLAG, HELPER, flag, helper_process, run
from people import ANNA, BORIS
from running import scenario
from waiting import check, now, wait_for

FLAGS_FOLDER = pathlib.Path(FLAG).parent
RECORDS = pathlib.Path("/run/ble-kovra-helper")


def kill_for_memory(process):
    """Makes the kernel's OOM killer kill this process."""
    pathlib.Path(f"/proc/{process}/oom_score_adj").write_text("1000")
    pathlib.Path("/proc/sysrq-trigger").write_text("f")
    killed = f"Killed process {process} "
    wait_for(lambda: killed in subprocess.run(["/bin/busybox", "dmesg"], capture_output=True, text=True).stdout,
             "the kernel to kill it")


@scenario("When the kernel kills the application because memory has run out, the pad is unmuted within 1 s.")
def application_out_of_memory(laptop):
    one = laptop.plug_pad(twin=True)
    application, _ = laptop.mute(one)
    since = now()
    kill_for_memory(application.pid)
    measured = laptop.expect_back_at_once(since, one, cause=now())
    check(flag() == "on", f"the flag is {flag()!r}")
    laptop.start()
    laptop.expect_dead(one)
    return measured


@scenario("When the kernel kills the helper because memory has run out, the pads are unmuted, and muted again after "
          "its restart.")
def helper_out_of_memory(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = laptop.mute(one)
    since = now()
    kill_for_memory(helper_process())
    back = [laptop.inhibitions.wait(device, False, since) for device in one.inputs]
    for device in one.inputs:
        laptop.inhibitions.wait(device, True, max(back))
    application.expect_running()
    laptop.expect_dead(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)
    return f"back after {max(back) - since:.2f} s"


def expect_all_to_work(laptop, application, mouse, pad):
    """Expects that the muted pad is unmuted when Boris becomes active, the mouse is unplugged, or the application is
    killed."""
    application.expect_running()
    laptop.expect_dead(pad)
    since = now()
    laptop.log_in(BORIS).activate()
    # The limit counts from here, since a restarted login manager may need a while to activate the session.
    laptop.expect_back_at_once(since, pad, cause=now())
    laptop.log_in(ANNA).activate()
    laptop.expect_dead(pad)
    mouse.unplug()
    measured = laptop.expect_back_after_grace(mouse, pad)
    laptop.plug_mouse()
    laptop.expect_dead(pad)
    since = now()
    application.kill()
    laptop.expect_back_at_once(since, pad)
    return measured


def mute_with_boris_in_the_background(laptop, pad):
    laptop.log_in(BORIS)
    laptop.log_in(ANNA).activate()
    return laptop.mute(pad)


def login_manager_answers():
    manager = ["org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager"]
    return subprocess.run(["busctl", "call", *manager, "ListSeats"], capture_output=True).returncode == 0


@scenario("After a restart of the system bus while the pad is muted, all works as before, and the application sleeps.")
def system_bus_restarted(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = mute_with_boris_in_the_background(laptop, one)
    run("systemctl", "restart", "dbus.service")
    # Since some version after 252 the login manager does not return to the bus by itself.
    run("systemctl", "restart", "systemd-logind.service")
    wait_for(login_manager_answers, "the login manager to be on the bus again")
    before, used = now(), application.cpu_time()
    laptop.expect_dead_until(before + 3, one)
    used = application.cpu_time() - used
    check(used < 0.3, f"the application has used {used:.2f} s of CPU time in {now() - before:.1f} s")
    return expect_all_to_work(laptop, application, mouse, one)


@scenario("After a restart of the login manager while the pad is muted, all works as before.")
def login_manager_restarted(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = mute_with_boris_in_the_background(laptop, one)
    run("systemctl", "restart", "systemd-logind.service")
    wait_for(login_manager_answers, "the login manager to be on the bus again")
    laptop.expect_dead_until(now() + AT_ONCE, one)
    return expect_all_to_work(laptop, application, mouse, one)


@scenario("After a restart of udevd while the pad is muted, all works as before.")
def udevd_restarted(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = mute_with_boris_in_the_background(laptop, one)
    run("systemctl", "restart", "systemd-udevd.service")
    laptop.expect_dead_until(now() + AT_ONCE, one)
    return expect_all_to_work(laptop, application, mouse, one)


@contextlib.contextmanager
def disk_of_its_own(laptop):
    """Stops the helper and mounts a tmpfs of 64 KiB over the parent of the flag's folder. Undoes both at the end."""
    laptop.install()
    run("systemctl", "stop", HELPER)
    mount = ["mount", "-t", "tmpfs", "-o", "mode=0755,size=64k,nr_inodes=30", "none", str(FLAGS_FOLDER.parent)]
    run("/bin/busybox", *mount)
    try:
        run("systemd-tmpfiles", "--create", "ble-kovra-helper.conf")
        yield
    finally:
        run("systemctl", "stop", HELPER)
        run("/bin/busybox", "umount", "-l", str(FLAGS_FOLDER.parent))
        run("systemctl", "start", HELPER)


def fill(folder):
    """Fills the file system of this folder, until there is room for no further byte and no further file."""
    folder.mkdir()
    for content in [b"x" * 4096, b""]:
        with contextlib.suppress(OSError):
            for number in itertools.count():
                (folder / f"{len(content)}-{number}").write_bytes(content)


@scenario("If the flag's disk is full when the helper starts, the helper runs and mutes nothing, until there is room.")
def full_disk_at_boot(laptop):
    one = laptop.plug_pad(twin=True)
    with disk_of_its_own(laptop):
        filling = FLAGS_FOLDER.parent / "filling"
        fill(filling)
        run("systemctl", "start", HELPER)
        application = laptop.start(mode="always")
        laptop.expect_alive_until(now() + 3, one)
        application.expect_running()
        shutil.rmtree(filling)
        since = now()
        laptop.expect_dead(one)
        late = laptop.inhibitions.last(one.inputs[0]) - since
        since = now()
        application.kill()
        laptop.expect_back_at_once(since, one)
    return f"dead {late:.1f} s after there was room"


def remount(how):
    run("/bin/busybox", "mount", "-o", f"remount,{how}", str(FLAGS_FOLDER.parent))


@scenario("If the flag's disk is read-only when the helper starts, the helper runs and mutes nothing. Once the "
          "disk is writable, a restart of the helper is enough.")
def read_only_at_boot(laptop):
    one = laptop.plug_pad(twin=True)
    with disk_of_its_own(laptop):
        pathlib.Path(FLAG).write_text("on")
        remount("ro")
        run("systemctl", "start", HELPER)
        application = laptop.start(mode="always")
        laptop.expect_alive_until(now() + 3, one)
        application.expect_running()
        remount("rw")
        # systemd has mounted the folder separately for the helper. That mount stays read-only until the helper is
        # restarted.
        run("systemctl", "restart", HELPER)
        laptop.expect_dead(one)
        since = now()
        application.kill()
        laptop.expect_back_at_once(since, one)


@scenario("If the flag's disk becomes read-only while the pad is muted, as after an error of the disk, the pad works "
          "again soon after the mouse is unplugged.")
def read_only_while_muted(laptop):
    one = laptop.plug_pad(twin=True)
    with disk_of_its_own(laptop):
        run("systemctl", "start", HELPER)
        application, mouse = laptop.mute(one)
        remount("ro")
        mouse.unplug()
        for device in one.inputs:
            laptop.inhibitions.wait(device, False, mouse.removed, limit=15)
        laptop.expect_alive(one)
        application.expect_running()
        remount("rw")
        application.kill()


@scenario("If the folder of the helper's records is removed while the pad is muted, the pad is unmuted all the same, "
          "and the next start of the helper creates the folder again.")
def records_removed(laptop):
    one = laptop.plug_pad(twin=True)
    _, mouse = laptop.mute(one)
    shutil.rmtree(RECORDS)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)
    run("systemctl", "restart", HELPER)
    mouse = laptop.plug_mouse()
    laptop.expect_dead(one)
    recorded = sorted(path.name for path in (RECORDS / "pads").iterdir())
    check(recorded == sorted(device.number for device in one.inputs), f"recorded are {recorded}")
    since = now()
    os.kill(helper_process(), signal.SIGKILL)
    for device in one.inputs:
        laptop.inhibitions.wait(device, False, since)
    laptop.expect_dead(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)
