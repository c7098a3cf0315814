#!/usr/bin/env python3
"""Inside a private session: starts the program and the floor in turn, then watches the program idle.

Prints one JSON object a line. The first evaluation shows from outside as the first write of the flag file; the floor is
that far when it asks for its place in the tray.
"""

import ctypes
import json
import os
import pathlib
import re
import select
import socket
import subprocess
import sys
import time

FLAG_FOLDER = b"/Library/Application Support/ble-kovra"
WATCHER = "org.kde.StatusNotifierWatcher"
IN_CLOSE_WRITE = 0x08
PATIENCE_SECONDS = 20
SETTLE_SECONDS = 3
NETLINK_KOBJECT_UEVENT, UDEV_GROUP = 15, 2


def main():
    program, floor, rounds, idle_seconds = sys.argv[1], sys.argv[2], int(sys.argv[3]), float(sys.argv[4])
    flag = FlagWritten()
    tray = TrayAsked() if floor else None
    for _ in range(rounds):
        report(kind="start", program="ours", **measured_start(program, flag))
        if floor:
            report(kind="start", program="floor", **measured_start(floor, tray))
    if tray:
        tray.close()

    started = Started(program, flag)
    time.sleep(SETTLE_SECONDS)
    report(kind="idle", **measured_idle(started.pid, idle_seconds, foreign=False))
    report(kind="idle", **measured_idle(started.pid, idle_seconds, foreign=True))
    started.end()


def report(**what):
    print(json.dumps(what), flush=True)


class FlagWritten:
    """Rings when somebody closes the flag file after writing."""

    def __init__(self):
        libc = ctypes.CDLL(None, use_errno=True)
        self.descriptor = libc.inotify_init1(os.O_CLOEXEC)
        if libc.inotify_add_watch(self.descriptor, FLAG_FOLDER, IN_CLOSE_WRITE) < 0:
            sys.exit("session: the flag's folder cannot be watched")

    def rang(self):
        return bool(os.read(self.descriptor, 65536))


class TrayAsked:
    """Rings when a program asks the tray for a place."""

    def __init__(self):
        self._monitor = subprocess.Popen(["dbus-monitor", f"interface='{WATCHER}'"], stdout=subprocess.PIPE)
        self.descriptor = self._monitor.stdout.fileno()
        # It begins by telling of itself.
        select.select([self.descriptor], [], [], PATIENCE_SECONDS)

    def rang(self):
        return b"RegisterStatusNotifierItem" in os.read(self.descriptor, 65536)

    def close(self):
        self._monitor.kill()
        self._monitor.wait()


class Started:
    """A program from its exec until the bell rings; `cpu` is what it took until then, in nanoseconds."""

    def __init__(self, program, bell):
        while select.select([bell.descriptor], [], [], 0.2)[0]:
            bell.rang()
        # The shell waits to be told, so that its own start does not count.
        self._process = subprocess.Popen(["/bin/sh", "-c", 'read -r go && exec "$0"', program], stdin=subprocess.PIPE)
        time.sleep(0.2)
        self._before = cpu_clock(self.pid)
        self._process.stdin.write(b"go\n")
        self._process.stdin.flush()
        deadline = time.monotonic() + PATIENCE_SECONDS
        while True:
            if not select.select([bell.descriptor], [], [], max(0, deadline - time.monotonic()))[0]:
                sys.exit(f"session: {os.path.basename(program)} was not seen to start")
            self.cpu = self.cpu_so_far()
            if bell.rang():
                return

    @property
    def pid(self):
        return self._process.pid

    def cpu_so_far(self):
        return cpu_clock(self.pid) - self._before

    def end(self):
        self._process.terminate()
        self._process.wait()


def cpu_clock(pid):
    return time.clock_gettime_ns((~pid << 3) | 2)  # the clock of that process's CPU time


def measured_start(program, bell):
    started = Started(program, bell)
    time.sleep(SETTLE_SECONDS)
    memory = pathlib.Path(f"/proc/{started.pid}/smaps_rollup").read_text()
    result = {"cpu": started.cpu / 1e6, "rest": started.cpu_so_far() / 1e6,
              "pss": mebibytes(memory, "Pss"), "dirty": mebibytes(memory, "Private_Dirty")}
    started.end()
    return result


def mebibytes(memory, name):
    return int(re.search(rf"^{name}:\s+(\d+) kB", memory, re.M).group(1)) / 1024


def measured_idle(pid, seconds, foreign):
    udev_events = socket.socket(socket.AF_NETLINK, socket.SOCK_DGRAM | socket.SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT)
    udev_events.bind((0, UDEV_GROUP))
    misc = next(pathlib.Path("/sys/class/misc").glob("*/uevent")) if foreign else None
    switches, cpu, heard = wake_ups(pid), cpu_clock(pid), 0
    begin = time.monotonic()
    while (past := time.monotonic() - begin) < seconds:
        if misc:
            misc.write_text("change")
        time.sleep(0.1 if misc else seconds - past)
        heard += drained(udev_events)
    if misc and heard == 0:
        sys.exit("session: udevd told of no foreign event")
    return {"seconds": past, "foreign": heard / past, "wakeups": (wake_ups(pid) - switches) / past,
            "cpu": (cpu_clock(pid) - cpu) / 1e6}


def drained(events):
    count = 0
    try:
        while events.recv(65536):
            count += 1
    except BlockingIOError:
        return count


def wake_ups(pid):
    threads = pathlib.Path(f"/proc/{pid}/task").glob("*/status")
    return sum(int(re.search(r"^voluntary_ctxt_switches:\s+(\d+)", thread.read_text(), re.M).group(1))
               for thread in threads)


if __name__ == "__main__":
    main()
