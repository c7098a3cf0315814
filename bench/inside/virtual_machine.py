"""Plugs the chosen mouse repeatedly in the virtual machine, and reports when the flag was written.

A minimal listener receives the same events and writes its own file. A separate watcher records the times of both
writes. The reports are in seconds since the kernel added the mouse.
"""

import subprocess

import flag
from waiting import check
from world import World

NAME = "Kovra Mouse"
KEY = "Kovra Mouse#4660:22136"
LISTENER_FILE = "/run/kovra/listener"
OURS, LISTENER = "0", "1"


def play(host, task):
    world = World(host, task["binary"], task["modules"])
    world.prepare()
    open(LISTENER_FILE, "w").close()
    # The kernel delivers an event to the newest socket first. Both sides have this advantage for half of the plugs.
    starts = [lambda: world.start(selected=[KEY]), lambda: Lines(task["floor"], LISTENER_FILE)]
    for order, plugs in [(starts, task["plugs"] // 2), (starts[::-1], task["plugs"] - task["plugs"] // 2)]:
        started = [start() for start in order]
        watcher = Lines(task["watcher"], flag.STATE, LISTENER_FILE)
        check(watcher.next() == ["watching"], "the watcher did not start")
        plug(host, world, watcher, plugs)
        for process in [watcher, *started]:
            process.kill()


def plug(host, world, watcher, plugs):
    for _ in range(plugs):
        mouse = world.plug(NAME)
        on = writes(watcher)
        host.report("plugged", ours=on[OURS] - mouse.added, floor=on[LISTENER] - mouse.added)
        # The flag becomes "off" two seconds after the removal. By then udevd is idle, too.
        mouse.unplug()
        writes(watcher)


def writes(watcher):
    """Returns the time of the next write of each file, by the file's index."""
    moments = {}
    while len(moments) < 2:
        name, moment = watcher.next()
        check(name not in moments, "a file was written twice")
        moments[name] = float(moment)
    return moments


class Lines:
    """A running program and the lines that it prints."""

    def __init__(self, *command):
        self._process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)

    def next(self):
        return self._process.stdout.readline().split()

    def kill(self):
        self._process.kill()
        self._process.wait()
