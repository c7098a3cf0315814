"""Scenarios of starts and ends: signals, a kill, a second start."""

import signal
import socket

import program
from flag import STATE
from openings import Openings
from plugging import MADE_UP
from running import scenario
from waiting import check, now, wait_for

LATEST_EXIT = 5.0


def end_by(world, number):
    """Muted by a mouse that stays, the program is asked to end: the trackpad is given back."""
    running = world.start(selected=[MADE_UP])
    world.expect_on(world.plug("Kovra Mouse"))
    since = now()
    running.send(number)
    status = running.wait_exit()
    check(status == 0, f"it ended with {status}: {running.last_words()}")
    world.flag.wait_write("off", since, LATEST_EXIT)
    world.expect_writes("off", "on", "off")
    return f"off after {world.flag.writes[-1].time - since:.2f} s"


@scenario("SIGTERM gives the trackpad back.")
def sigterm(world):
    return end_by(world, signal.SIGTERM)


@scenario("So does SIGINT.")
def sigint(world):
    return end_by(world, signal.SIGINT)


@scenario("So does SIGHUP.")
def sighup(world):
    return end_by(world, signal.SIGHUP)


@scenario("A kill leaves the flag on; the next start writes anew, whatever the flag says.")
def kill_and_restart(world):
    running = world.start(selected=[MADE_UP])
    world.expect_on(world.plug("Kovra Mouse"))
    running.send(signal.SIGKILL)
    running.wait_exit()
    world.expect_quiet_until(now() + 0.5)
    world.expect_writes("off", "on")
    world.start(selected=[MADE_UP])
    wait_for(lambda: len(world.flag.writes) == 4, "two more writes")
    world.expect_writes("off", "on", "off", "on")


@scenario("A mouse plugged in the same turn as SIGTERM: the last write is off, whichever of the two was first.")
def plug_and_sigterm_at_once(world):
    for signal_first in [True, False]:
        running = world.start(selected=[MADE_UP])
        running.stop()
        if signal_first:
            running.send(signal.SIGTERM)
        mouse = world.plug("Kovra Mouse")
        world.settle()
        running.send(signal.SIGTERM)
        running.send(signal.SIGCONT)
        running.wait_exit()
        check(world.flag.last() == "off", f"written: {world.flag.contents()}")
        mouse.unplug()


@scenario("Told to end while the session bus does not answer, it first clears the flag that a crash left on.")
def end_at_a_silent_bus(world):
    STATE.write_text("on")
    address = "kovra-silent-bus"
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind("\0" + address)
        listener.listen()
        listener.setblocking(False)

        def asks():
            try:
                return listener.accept()[0]
            except BlockingIOError:
                return None

        running = world.start(wait=False, bus=f"unix:abstract={address}", mode="always")
        with wait_for(asks, "the program to ask the bus"):
            running.send(signal.SIGTERM)
            status = running.wait_exit()
    check(status == 0, f"it ended with {status}: {running.last_words()}")
    check(world.flag.last() == "off", f"written: {world.flag.contents()}")


@scenario("A second start on the same session leaves at once: it reads no choices, never opens the flag, and the first goes on.")
def second_start(world):
    program.write_preferences(selected=[MADE_UP])
    choices = Openings(program.PREFERENCES)
    first = world.start(selected=[MADE_UP])
    check(choices.take() >= 2, "the first start was not seen to read its choices")
    mouse = world.plug("Kovra Mouse")
    world.expect_on(mouse)
    opened = world.flag.openings
    # Had it read these choices, it would have something to write.
    second = world.start(wait=False, selected=[MADE_UP], enabled=False)
    status = second.wait_exit()
    check(status == 0, f"it ended with {status}: {second.last_words()}")
    check(world.flag.openings == opened, "it opened the flag")
    check(choices.take() == 1, "it read the choices")  # the one opening is this scenario's own, to store them
    world.expect_writes("off", "on")
    check(first.is_running(), "the first ended too")
    mouse.unplug()
    world.expect_off_after_grace(mouse)
