"""Scenarios at a desktop: a screen, a keyboard, and the icon as a panel reads it."""

import contextlib
import json
import signal
import subprocess

import program
from plugging import MADE_UP
from running import scenario
from screen import Screen
from waiting import check, now, stay_until, wait_for

ITEM = ("--dest=org.ble_kovra.BLEKovra", "/StatusNotifierItem", "org.freedesktop.DBus.Properties.Get",
        "string:org.kde.StatusNotifierItem", "string:IconName")
PLAIN, SLASHED = "ble-kovra-symbolic", "ble-kovra-muted-symbolic"


def icon(world):
    """Queries the icon's name, like a panel, and returns it. The name is empty while there is no item."""
    command = ["dbus-send", "--print-reply=literal", f"--bus={world.session_bus()}", *ITEM]
    answer = subprocess.run(command, capture_output=True, text=True)
    return answer.stdout.split()[-1] if answer.returncode == 0 else ""


def expect_icon(world, name):
    wait_for(lambda: icon(world) == name, f"the icon {name}")


def saved_switch():
    return json.loads(program.PREFERENCES.read_text(encoding="utf-8"))["isEnabled"]


@scenario("A plugged mouse adds the slash to the icon; the hot key switches muting off and on, and saves each change.")
def hot_key_and_icon(world):
    with contextlib.closing(Screen()) as screen:
        world.start(selected=[MADE_UP], display=screen.name)
        expect_icon(world, PLAIN)
        mouse = world.plug("Kovra Mouse")
        world.expect_on(mouse)
        expect_icon(world, SLASHED)

        pressed = now()
        screen.press_hot_key()
        off = world.flag.wait_write("off", pressed).time - pressed
        expect_icon(world, PLAIN)
        check(saved_switch() is False, "the switch was not saved as off")

        pressed = now()
        screen.press_hot_key()
        on = world.flag.wait_write("on", pressed).time - pressed
        expect_icon(world, SLASHED)
        check(saved_switch() is True, "the switch was not saved as on")
        world.expect_writes("off", "on", "off", "on")
    return f"off {off:.2f} s and on {on:.2f} s after the key"


@scenario("When the screen disconnects, as at a logout, the trackpad is unmuted and the program ends.")
def end_of_the_screen(world):
    screen = Screen()
    with contextlib.closing(screen):
        running = world.start(selected=[MADE_UP], display=screen.name)
        world.expect_on(world.plug("Kovra Mouse"))
        since = now()
    status = running.wait_exit()
    check(status == 0, f"it ended with {status}: {running.last_words()}")
    world.flag.wait_write("off", since)


@scenario("While the screen hangs the mouse still counts, and SIGTERM unmutes the trackpad.")
def hanging_screen(world):
    with contextlib.closing(Screen()) as screen:
        running = world.start(selected=[MADE_UP], display=screen.name)
        screen.hang()
        # Wait until the program has queried the screen for a tray. It does so if no panel has started.
        stay_until(now() + 6)
        mouse = world.plug("Kovra Mouse")
        world.expect_on(mouse)
        mouse.unplug()
        world.expect_off_after_grace(mouse)
        world.expect_on(world.plug("Kovra Mouse"))
        since = now()
        running.send(signal.SIGTERM)
        status = running.wait_exit()
        check(status == 0, f"it ended with {status}: {running.last_words()}")
        world.flag.wait_write("off", since)
