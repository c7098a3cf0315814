"""Scenarios in which the laptop sleeps, or the helper misses events, while devices are plugged in and unplugged."""

import contextlib
import os
import pathlib
import re
import socket
import time

from ends import helper_process
from laptop import AT_ONCE, GRACE, HELPER_PROCESSES, flag, run
from running import scenario
from waiting import check, now, wait_for

GROUPS = pathlib.Path("/sys/fs/cgroup")
POWER = pathlib.Path("/sys/power")
DELAY = pathlib.Path("/sys/module/suspend/parameters/pm_test_delay")
NETLINK_KOBJECT_UEVENT, UDEV_GROUP = 15, 2


@contextlib.contextmanager
def frozen(*groups):
    """Stops all processes of these control groups within the `with` block, without a signal."""
    def write(value):
        for group in groups:
            (group / "cgroup.freeze").write_text(value)
            wait_for(lambda: f"frozen {value}" in (group / "cgroup.events").read_text(), f"{group.name} to change")
    write("1")
    try:
        yield
    finally:
        write("0")


def group_of(process):
    return GROUPS / pathlib.Path(f"/proc/{process}/cgroup").read_text().strip().removeprefix("0::/")


def suspends():
    return int((POWER / "suspend_stats" / "success").read_text())


def suspend(seconds):
    """Suspends the laptop through the login manager. The kernel only freezes all processes for this time.

    It cannot suspend the devices of the virtual machine: its root file system would not survive that.
    """
    (POWER / "pm_test").write_text("freezer")
    DELAY.write_text(str(seconds))
    before = suspends()
    run("systemctl", "suspend")
    wait_for(lambda: suspends() > before, "the laptop to resume")


@contextlib.contextmanager
def asleep(application, seconds=1, hours=8):
    """Lets the laptop sleep for that long. The `with` block changes devices that nobody notices until the resume.

    The kernel does nothing for the seconds. The hours do not pass: the real-time clock is set.
    """
    with frozen(group_of(application.pid), GROUPS / "system.slice/systemd-udevd.service"):
        yield
        suspend(seconds)
        time.clock_settime(time.CLOCK_REALTIME, time.time() + hours * 3600)


@scenario("If the mouse was unplugged while the laptop slept, the pad is unmuted at most 2 s after the resume. If "
          "the mouse was plugged in, the pad is muted, also under a new number.")
def slept(laptop):
    one = laptop.plug_pad(twin=True)
    application, mouse = laptop.mute(one)
    with asleep(application):
        mouse.unplug()
    woken = now()
    back = max(laptop.inhibitions.wait(device, False, mouse.removed) for device in one.inputs)
    check(back - woken <= GRACE + AT_ONCE, f"back only {back - woken:.2f} s after the resume")
    laptop.expect_alive(one)

    with asleep(application):
        one.unplug()
        again = laptop.plug_pad(twin=True)
        mouse = laptop.plug_mouse()
    laptop.expect_dead(again)
    application.expect_running()
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, again)
    return f"back {back - woken:.2f} s after the resume"


def lost_messages(process):
    """Returns how many netlink messages the kernel has dropped because a socket of this process was full."""
    folder = f"/proc/{process}/fd"
    links = [os.readlink(os.path.join(folder, name)) for name in os.listdir(folder)]
    inodes = {found[1] for found in map(re.compile(r"socket:\[(\d+)\]").fullmatch, links) if found}
    rows = [line.split() for line in pathlib.Path("/proc/net/netlink").read_text().splitlines()[1:]]
    return sum(int(row[8]) for row in rows if row[9] in inodes)


def fill_socket(process, device):
    """Repeats a message of udevd about this input device until the process, which is frozen, has lost some."""
    with socket.socket(socket.AF_NETLINK, socket.SOCK_RAW, NETLINK_KOBJECT_UEVENT) as udev:
        udev.bind((0, UDEV_GROUP))
        run("udevadm", "trigger", "--action=change", f"/sys/class/input/{device.number}")
        message = b""
        while f"/{device.number}\0".encode() not in message:
            message = udev.recv(1 << 16)

        def is_full():
            for _ in range(50):
                udev.sendto(message, (0, UDEV_GROUP))
            return lost_messages(process)
        wait_for(is_full, "the socket to be full")


@scenario("If so many events arrive that the helper loses some, it looks at all devices, and mutes a pad whose event "
          "was lost.")
def events_lost(laptop):
    one = laptop.plug_pad()
    application = laptop.start_and_wait_for_write()
    laptop.settle()
    helper = helper_process()
    with frozen(HELPER_PROCESSES):
        fill_socket(helper, one.inputs[0])
        other = laptop.plug_pad("SYNA8004:00 06CB:CD8C", product=0xcd8c)
        laptop.settle()
        mouse = laptop.plug_mouse()
        wait_for(lambda: flag() == "on", "the application to write its word")
    laptop.expect_dead(one, other)
    check(helper_process() == helper, "the helper has ended")
    application.expect_running()
    mouse.unplug()
    return laptop.expect_back_after_grace(mouse, one, other)
