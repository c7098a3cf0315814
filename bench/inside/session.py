#!/usr/bin/env python3
"""Starts the builds of the program and the floor in turn in a private session, then measures the idle program.

Prints one JSON object per line. A start of the program ends with the first write of the flag file, which shows that the
program has made its first evaluation. A start of the floor ends when the floor registers with the tray.
"""

import ctypes
import json
import os
import pathlib
import select
import socket
import subprocess
import sys
import time

import processes
from tray_host import TrayHost

FLAG_FOLDER = b"/Library/Application Support/ble-kovra"
UDEVD = pathlib.Path("/run/udev/control")
WATCHER = "org.kde.StatusNotifierWatcher"
IN_CLOSE_WRITE = 0x08
TIMEOUT_SECONDS = 20
SETTLE_SECONDS = 3
NETLINK_KOBJECT_UEVENT, UDEV_GROUP = 15, 2


def main():
    task = json.loads(sys.argv[1])
    with TrayHost(task["tray_host"]):
        starts(task["programs"], task["rounds"])
        idling(task["programs"]["ours"], task["idle"])


def starts(programs, rounds):
    flag, tray = FlagWrite(), TrayRegistration()
    events = {name: tray if name == "floor" else flag for name in programs}
    for _ in range(rounds):
        for name, program in programs.items():
            report(kind="start", program=name, **measured_start(program, events[name]))
    tray.close()


def idling(program, seconds):
    started = Started(program, FlagWrite())
    time.sleep(SETTLE_SECONDS)
    for foreign in (False, True):
        report(kind="idle", udevd=True, **measured_idle(started.pid, seconds, foreign))
    started.end()
    # A program that does not find this socket considers udevd as not running.
    UDEVD.rename(UDEVD.with_name("hidden"))
    started = Started(program, FlagWrite())
    time.sleep(SETTLE_SECONDS)
    report(kind="idle", udevd=False, **measured_idle(started.pid, seconds, foreign=False))
    started.end()


def report(**what):
    print(json.dumps(what), flush=True)


class FlagWrite:
    """Fires when a process closes a file in the flag's folder after writing."""

    def __init__(self):
        libc = ctypes.CDLL(None, use_errno=True)
        self.descriptor = libc.inotify_init1(os.O_CLOEXEC)
        if libc.inotify_add_watch(self.descriptor, FLAG_FOLDER, IN_CLOSE_WRITE) < 0:
            sys.exit("session: the flag's folder cannot be watched")

    def has_fired(self):
        return bool(os.read(self.descriptor, 65536))


class TrayRegistration:
    """Fires when a program registers with the tray."""

    def __init__(self):
        self._monitor = subprocess.Popen(["dbus-monitor", f"interface='{WATCHER}'"], stdout=subprocess.PIPE)
        self.descriptor = self._monitor.stdout.fileno()
        # dbus-monitor is ready once it prints its first messages, which are about its own connection.
        select.select([self.descriptor], [], [], TIMEOUT_SECONDS)

    def has_fired(self):
        return b"RegisterStatusNotifierItem" in os.read(self.descriptor, 65536)

    def close(self):
        self._monitor.kill()
        self._monitor.wait()


class Started:
    """A started program. `cpu` is its CPU time in nanoseconds from its exec until the event fired."""

    def __init__(self, program, event):
        while select.select([event.descriptor], [], [], 0.2)[0]:
            event.has_fired()
        # The shell waits for a line, so that the start of the shell does not count.
        self._process = subprocess.Popen(["/bin/sh", "-c", 'read -r go && exec "$0"', program], stdin=subprocess.PIPE)
        time.sleep(0.2)
        self._before = processes.cpu_time(self.pid)
        self._process.stdin.write(b"go\n")
        self._process.stdin.flush()
        deadline = time.monotonic() + TIMEOUT_SECONDS
        while True:
            if not select.select([event.descriptor], [], [], max(0, deadline - time.monotonic()))[0]:
                sys.exit(f"session: {os.path.basename(program)} was not seen to start")
            self.cpu = self.cpu_so_far()
            if event.has_fired():
                return

    @property
    def pid(self):
        return self._process.pid

    def cpu_so_far(self):
        return processes.cpu_time(self.pid) - self._before

    def end(self):
        self._process.terminate()
        self._process.wait()


def measured_start(program, event):
    started = Started(program, event)
    time.sleep(SETTLE_SECONDS)
    result = {"cpu": started.cpu / 1e6, "rest": started.cpu_so_far() / 1e6,
              "pss": processes.memory([started.pid]),
              "dirty": processes.memory([started.pid], "Private_Dirty")}
    started.end()
    return result


def measured_idle(pid, seconds, foreign):
    udev_events = socket.socket(socket.AF_NETLINK, socket.SOCK_DGRAM | socket.SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT)
    udev_events.bind((0, UDEV_GROUP))
    misc = next(pathlib.Path("/sys/class/misc").glob("*/uevent")) if foreign else None
    watch, received, begin = processes.Watch([pid]), 0, time.monotonic()
    while (past := time.monotonic() - begin) < seconds:
        if misc:
            misc.write_text("change")
        time.sleep(0.1 if misc else seconds - past)
        received += drained(udev_events)
    if misc and received == 0:
        sys.exit("session: udevd passed on no foreign event")
    return {"seconds": past, "foreign": received / past, "wakeups": watch.wake_ups() / past, "cpu": watch.cpu()}


def drained(events):
    count = 0
    try:
        while events.recv(65536):
            count += 1
    except BlockingIOError:
        return count


if __name__ == "__main__":
    main()
