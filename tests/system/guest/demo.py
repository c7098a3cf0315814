"""The demo inside the virtual machine: plugs and unplugs a mouse, and reports each event to the host at once."""

import signal

from plugging import USB_MOUSE
from waiting import now
from world import World

DROP_OUT = 1.0
GRACE_IS_OVER = 3.0


class Timeline:
    def __init__(self, host, world):
        self._host, self._world = host, world
        self._start = None

    def row(self, moment, event, since=None, flag=None):
        """Reports one row of the demo's table. The row's delay is the time from `since` to `moment`, in seconds."""
        self._start = self._start or moment
        self._host.report("row", time=moment - self._start, event=event, flag=flag or self._world.flag.last(),
                          delay=None if since is None else moment - since)


def play(host, task):
    world = World(host, task["binary"], task["modules"])
    world.prepare()
    world.session_bus()
    timeline = Timeline(host, world)
    start_without_a_choice(world, timeline)
    mouse = plug_a_stranger(world, timeline)
    running = choose_it(world, timeline)
    unplug_it(world, timeline, mouse)
    drop_out(world, timeline)
    quit_muted(world, timeline, running)


def start_without_a_choice(world, timeline):
    world.start()
    timeline.row(world.flag.writes[0].time, "BLE-kovra starts; no mouse is chosen yet")


def plug_a_stranger(world, timeline):
    mouse = world.plug_usb_mouse()
    timeline.row(mouse.added, "a USB mouse is plugged in")
    world.settle()
    world.expect_quiet_until(now() + 1.0)
    timeline.row(now(), "nothing happens: it is not chosen")
    return mouse


def choose_it(world, timeline):
    world.programs[0].send(signal.SIGTERM)
    world.programs[0].wait_exit()
    since = now()
    timeline.row(since, "it is chosen, and BLE-kovra started again")
    running = world.start(selected=[USB_MOUSE])
    on = world.flag.wait_write("on", since)
    timeline.row(on.time, "the chosen mouse is connected: the trackpad is muted")
    return running


def unplug_it(world, timeline, mouse):
    world.expect_quiet_until(now() + 1.0)
    removed = mouse.unplug()
    timeline.row(removed, "the mouse is unplugged; it may be back in a moment", flag="on")
    world.expect_off_after_grace(mouse)
    timeline.row(world.flag.writes[-1].time, "it did not come back: the trackpad works again", since=removed)


def drop_out(world, timeline):
    mouse = world.plug("QEMU QEMU USB Mouse", 1575, 1)
    world.expect_on(mouse)
    timeline.row(mouse.added, "the mouse is plugged in again", flag="off")
    timeline.row(world.flag.writes[-1].time, "the trackpad is muted again", since=mouse.added)
    removed = mouse.unplug()
    timeline.row(removed, "the connection drops for a second...")
    world.expect_quiet_until(removed + DROP_OUT)
    again = world.plug("QEMU QEMU USB Mouse", 1575, 1)
    timeline.row(again.added, "...and the mouse is back", since=removed)
    world.expect_quiet_until(again.added + GRACE_IS_OVER)
    timeline.row(now(), "the trackpad stayed muted all the while")


def quit_muted(world, timeline, running):
    since = now()
    running.send(signal.SIGTERM)
    timeline.row(since, "BLE-kovra gets SIGTERM, the mouse still connected")
    off = world.flag.wait_write("off", since)
    timeline.row(off.time, "it leaves the trackpad working", since=since)
    running.wait_exit()
