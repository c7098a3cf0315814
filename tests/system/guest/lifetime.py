"""Scenarios in which the program ends by a signal, or is started a second time."""

import signal
import socket

import program
from flag import STATE
from inotify import IN_CLOSE_NOWRITE, IN_CLOSE_WRITE, IN_OPEN, Counter
from plugging import MADE_UP
from running import scenario
from waiting import check, now, wait_for

LATEST_EXIT = 5.0


def end_by(world, number):
    """Sends the signal while the flag is "on". Expects that the program ends and has written "off"."""
    running = world.start(selected=[MADE_UP])
    world.expect_on(world.plug("Kovra Mouse"))
    since = now()
    running.send(number)
    status = running.wait_exit()
    check(status == 0, f"it ended with {status}: {running.last_words()}")
    world.flag.wait_write("off", since, LATEST_EXIT)
    world.expect_writes("off", "on", "off")
    return f"off after {world.flag.writes[-1].time - since:.2f} s"


@scenario("SIGTERM unmutes the trackpad.")
def sigterm(world):
    return end_by(world, signal.SIGTERM)


@scenario("SIGINT unmutes the trackpad.")
def sigint(world):
    return end_by(world, signal.SIGINT)


@scenario("SIGHUP unmutes the trackpad.")
def sighup(world):
    return end_by(world, signal.SIGHUP)


@scenario("After SIGKILL the flag stays on; the next start writes the flag, whatever it contains.")
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


@scenario("If a plug and SIGTERM arrive together, the last write is off, in either order.")
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
        check(world.flag.last() == "off", f"the writes were: {world.flag.contents()}")
        mouse.unplug()


@scenario("SIGTERM while the session bus does not answer clears the flag that a crash left on.")
def end_at_a_silent_bus(world):
    STATE.write_text("on")
    address = "kovra-silent-bus"
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind("\0" + address)
        listener.listen()
        listener.setblocking(False)

        def connection():
            try:
                return listener.accept()[0]
            except BlockingIOError:
                return None

        running = world.start(wait=False, bus=f"unix:abstract={address}", mode="always")
        with wait_for(connection, "the program to connect to the bus"):
            running.send(signal.SIGTERM)
            status = running.wait_exit()
    check(status == 0, f"it ended with {status}: {running.last_words()}")
    check(world.flag.last() == "off", f"the writes were: {world.flag.contents()}")


@scenario("A second start in the session exits at once, reads no preferences and does not disturb the first.")
def second_start(world):
    program.write_preferences(selected=[MADE_UP])
    openings = Counter(program.PREFERENCES, IN_OPEN, between=IN_CLOSE_NOWRITE | IN_CLOSE_WRITE)
    first = world.start(selected=[MADE_UP])
    check(openings.take() >= 2, "the first start did not read its preferences")
    mouse = world.plug("Kovra Mouse")
    world.expect_on(mouse)
    opened = world.flag.openings
    # If the second start read these preferences, it would write "off", since the switch is off in them.
    second = world.start(wait=False, selected=[MADE_UP], enabled=False)
    status = second.wait_exit()
    check(status == 0, f"it ended with {status}: {second.last_words()}")
    check(world.flag.openings == opened, "it opened the flag")
    check(openings.take() == 1, "it read the preferences")  # world.start() has opened the file once, to write it
    world.expect_writes("off", "on")
    check(first.is_running(), "the first instance ended too")
    mouse.unplug()
    world.expect_off_after_grace(mouse)
