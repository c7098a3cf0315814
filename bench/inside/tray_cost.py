#!/usr/bin/python3
"""Measures tray programs in turn in a private session. The first start of each program does not count.

Reads its task as JSON from the command line:

  programs   the name and the command of each program
  rounds     the number of rounds
  deep       the number of rounds that also measure memory and the idle cost
  idle       the duration of the idle measurement in seconds
  open       the menu entry that opens a window, if this is to be measured
  calm       how long each start may wait for a quiet machine, in seconds

Prints as JSON the measurements of each program by round, and the reason for each program that showed no icon or window.
"""

import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import uuid

import processes
from tray_host import TrayHost

START_LIMIT_SECONDS = 15
SETTLE_SECONDS = 3
# The machine is quiet if all processes together use at most this share of its CPUs.
CALM_SHARE = 0.15


class NoIcon(Exception):
    pass


def main():
    print(json.dumps(measure(json.loads(sys.argv[1]))))


def measure(task):
    rounds, failed = {name: [] for name in task["programs"]}, {}
    with tempfile.TemporaryDirectory() as folder, TrayHost(task["tray_host"]) as host:
        cost = Cost(task, host, pathlib.Path(folder))
        for name in task["programs"]:
            cost.try_first(name)
        for number in range(task["rounds"]):
            print(f"bench: round {number + 1} of {task['rounds']}", file=sys.stderr)
            names = list(rounds)
            shift = number % max(1, len(names))
            for name in names[shift:] + names[:shift]:
                try:
                    rounds[name].append(cost.of(name, is_deep=number < task["deep"]))
                except NoIcon as reason:
                    failed[name] = str(reason)
                    del rounds[name]
    return {"rounds": rounds, "failed": failed}


class Cost:
    def __init__(self, task, host, folder):
        self._task, self._host, self._folder = task, host, folder

    def try_first(self, name):
        """Starts the program once without counting, since the first start reads a lot from the disk."""
        try:
            self.of(name, is_deep=False)
        except NoIcon:
            pass

    def of(self, name, is_deep):
        """Starts the program once; returns its measurements."""
        wait_for_calm(self._task["calm"])
        self._host.forget()
        home = self._folder / name
        home.mkdir(exist_ok=True)
        with Program(self._task, name, home, self._host) as program:
            taken = program.start()
            time.sleep(SETTLE_SECONDS if is_deep else 0.4)
            if is_deep:
                taken |= self._at_rest(program)
            if self._task.get("open"):
                taken |= self._openings(program, is_deep)
            return taken

    def _at_rest(self, program):
        pids = program.processes()
        taken = {"pss": processes.memory(pids), "dirty": processes.memory(pids, "Private_Dirty"),
                 "processes": len(pids), "threads": len(processes.threads(pids))}
        watch = processes.Watch(pids)
        time.sleep(self._task["idle"])
        return taken | {"wakeups": watch.wake_ups() / self._task["idle"], "idle": watch.cpu()}

    def _openings(self, program, is_deep):
        """Opens the window twice; returns the times from the choice to the first drawing, in milliseconds.

        In a deep round it also returns the PSS while the window is open.
        """
        taken = {}
        for which in ("first", "second"):
            self._host.say("choose", self._task["open"])
            chosen = self._host.wait("chosen", "no-entry")
            painted = chosen.kind == "chosen" and self._host.wait("painted")
            if not painted:
                raise NoIcon("no window opened")
            taken[which] = (painted.moment - chosen.moment) / 1e6
            time.sleep(1 if is_deep else 0.3)
            if is_deep and which == "first":
                taken["open_pss"] = processes.memory(program.processes())
            self._host.say("close")
            self._host.wait("gone")
            time.sleep(0.5)
        return taken


class Program:
    """One run of a measured program. Use it as a context manager, which ends all processes of the program."""

    def __init__(self, task, name, home, host):
        self._host = host
        self._word = f"KOVRA_BENCH_SUBJECT={uuid.uuid4().hex}"
        self._log = home / "log"
        key, value = self._word.split("=")
        with open(self._log, "wb") as log:
            self._process = subprocess.Popen(
                [task["start_when_told"], *task["programs"][name]], cwd=home, start_new_session=True,
                env={**os.environ, key: value, "HOME": str(home)},
                stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=log)
        host.say("subject", self._process.pid, self._word)
        host.wait("subject")

    def __enter__(self):
        return self

    def start(self):
        """Returns the elapsed time and the CPU time from exec until the icon registers, in milliseconds."""
        self._process.stdin.write(b"!")
        self._process.stdin.close()
        moment, own_cpu = map(int, self._process.stdout.readline().split())
        registered = self._host.wait("registered", seconds=START_LIMIT_SECONDS)
        if not registered:
            words = self._log.read_text(errors="replace").strip().splitlines()
            raise NoIcon(words[-1][:150] if words else f"no icon in {START_LIMIT_SECONDS} s")
        return {"icon": (registered.moment - moment) / 1e6, "cpu": (int(registered.words[0]) - own_cpu) / 1e6}

    def processes(self):
        found = []
        for entry in pathlib.Path("/proc").iterdir():
            try:
                if entry.name.isdigit() and self._word.encode() in (entry / "environ").read_bytes():
                    found.append(int(entry.name))
            except OSError:
                continue
        return found

    def __exit__(self, *_):
        for sign in (signal.SIGTERM, signal.SIGKILL):
            deadline = time.monotonic() + 2
            for pid in self.processes():
                try:
                    os.kill(pid, sign)
                except ProcessLookupError:
                    pass
            while self.processes() and time.monotonic() < deadline:
                time.sleep(0.02)
        self._process.wait()
        self._process.stdout.close()


def wait_for_calm(limit):
    deadline = time.monotonic() + limit
    while busy_share(0.2) > CALM_SHARE and time.monotonic() < deadline:
        pass


def busy_share(seconds):
    def ticks():
        user, nice, system, idle, waiting, *others = map(int, pathlib.Path("/proc/stat").read_text().split()[1:9])
        return user + nice + system + sum(others), idle + waiting
    busy, idle = ticks()
    time.sleep(seconds)
    busy_then, idle_then = ticks()
    return (busy_then - busy) / max(1, busy_then - busy + idle_then - idle)


if __name__ == "__main__":
    main()
