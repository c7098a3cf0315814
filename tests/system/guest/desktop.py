"""Scenarios that need an X server: the hot key, the icon's name on the bus, the windows, and saving the switch."""

import contextlib
import json
import os
import pathlib
import signal
import subprocess

import program
from hanging import HangingFolder
from plugging import MADE_UP
from program import window_processes
from running import scenario
from screen import ESCAPE, Screen
from waiting import check, now, stay_until, wait_for

ITEM = ("--dest=org.ble_kovra.BLEKovra", "/StatusNotifierItem", "org.freedesktop.DBus.Properties.Get",
        "string:org.kde.StatusNotifierItem", "string:IconName")
MENU = "/MenuBar"
ACTIVATE = 5  # the number of this entry on the bus
# The machine has no desktop of which anything is known.
PLAIN, SLASHED = "ble-kovra-outlined-light", "ble-kovra-muted-outlined-light"


def icon(world):
    """Returns the icon's name as the status item reports it on the bus; empty if there is no status item."""
    command = ["dbus-send", "--print-reply=literal", f"--bus={world.session_bus()}", *ITEM]
    answer = subprocess.run(command, capture_output=True, text=True)
    return answer.stdout.split()[-1] if answer.returncode == 0 else ""


def choose(world, entry):
    """Chooses an entry of the menu, as a host does. Returns whether the program has answered."""
    command = ["dbus-send", "--print-reply", f"--bus={world.session_bus()}", "--dest=org.ble_kovra.BLEKovra", MENU,
               "com.canonical.dbusmenu.Event", f"int32:{entry}", "string:clicked", "variant:int32:0", "uint32:0"]
    return subprocess.run(command, capture_output=True).returncode == 0


def expect_icon(world, name):
    wait_for(lambda: icon(world) == name, f"the icon {name}")


def saved_switch():
    """Returns "isEnabled" from the preferences file, or None if it was never saved."""
    return json.loads(program.PREFERENCES.read_text(encoding="utf-8")).get("isEnabled")


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
        wait_for(lambda: saved_switch() is False, "the switch to be saved as off")

        pressed = now()
        screen.press_hot_key()
        on = world.flag.wait_write("on", pressed).time - pressed
        expect_icon(world, SLASHED)
        wait_for(lambda: saved_switch() is True, "the switch to be saved as on")
        world.expect_writes("off", "on", "off", "on")
    return f"off {off:.2f} s and on {on:.2f} s after the key"


@scenario("Saving ten changes adds no heap and no large stack: less than a megabyte of address space.")
def memory_of_saving(world):
    with contextlib.closing(Screen()) as screen:
        running = world.start(selected=[MADE_UP], display=screen.name)
        expect_icon(world, PLAIN)
        before = running.address_space()
        for change in range(10):
            screen.press_hot_key()
            wait_for(lambda: saved_switch() == (change % 2 == 1), "the switch to be saved")
        grown = running.address_space() - before
        check(grown < 1024, f"the address space has grown by {grown} KiB")
    return f"{grown} KiB"


@scenario("While the disk of the preferences hangs the hot key unmutes at once; quitting waits a second and says so.")
def hanging_disk(world):
    with contextlib.closing(Screen()) as screen:
        running = world.start(selected=[MADE_UP], display=screen.name)
        expect_icon(world, PLAIN)
        world.expect_on(world.plug("Kovra Mouse"))
        with contextlib.closing(HangingFolder(program.PREFERENCES.parent)):
            pressed = now()
            screen.press_hot_key()
            off = world.flag.wait_write("off", pressed, 20).time - pressed
            check(off < 2, f"off only {off:.2f} s after the key")
            screen.press_hot_key()
            world.flag.wait_write("on", pressed, 20)
            ended = now()
            running.send(signal.SIGTERM)
            world.flag.wait_write("off", ended, 20)
            line = f"ble-kovra: настройки ({program.PREFERENCES}) не сохранены за 1 с, программа их не дожидается"
            wait_for(lambda: world.journal.messages == [line], "the line in the log")
        check(running.wait_exit() == 0, f"it ended with {running.last_words()}")
    return f"off {off:.2f} s after the key"


@scenario("While the disk of the autostart entries hangs the program mutes and unmutes as usual, and SIGTERM ends it.")
def hanging_autostart(world):
    folder = program.HOME / ".config" / "autostart"
    folder.mkdir(parents=True)
    entry = "[Desktop Entry]\nType=Application\nExec=/bin/true\n"
    path = folder / "org.ble_kovra.BLEKovra.desktop"
    path.write_text(entry, encoding="utf-8")
    running = world.start(selected=[MADE_UP])
    expect_icon(world, PLAIN)
    os.utime(path)  # an entry that has changed must be read again
    with contextlib.closing(HangingFolder(folder)):
        mouse = world.plug("Kovra Mouse")
        world.expect_on(mouse)
        mouse.unplug()
        delay = world.expect_off_after_grace(mouse)
        world.expect_on(world.plug("Kovra Mouse"))
        ended = now()
        running.send(signal.SIGTERM)
        world.flag.wait_write("off", ended, 20)
        check(running.wait_exit() == 0, f"it ended with {running.last_words()}")
    return f"off {delay:.2f} s after the unplug"


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


def start_again(world, screen):
    second = world.start(wait=False, selected=[MADE_UP], display=screen.name)
    check(second.wait_exit() == 0, f"the second start printed {second.last_words()}")


@scenario("A window process that hangs is replaced when it has something to show, and the settings window opens.")
def hanging_window_process(world):
    with contextlib.closing(Screen()) as screen:
        running = world.start(selected=[MADE_UP], display=screen.name)
        start_again(world, screen)
        wait_for(screen.shows_settings, "the settings window")
        screen.wait_keyboard()
        screen.press(ESCAPE)
        wait_for(lambda: not screen.windows(), "the settings window to close")
        old = window_processes(running.pid)
        check(len(old) == 1, f"the window processes are {old}")
        os.kill(old[0], signal.SIGSTOP)
        asked = now()
        start_again(world, screen)
        wait_for(screen.shows_settings, "the settings window of another window process")
        measured = now() - asked
        check(old[0] not in window_processes(running.pid), "the process that hangs was not ended")
        check(running.is_running(), f"the program ended: {running.last_words()}")
    return f"opened after {measured:.1f} s"


@scenario("While the screen hangs the mouse still counts, and SIGTERM unmutes the trackpad.")
def hanging_screen(world):
    with contextlib.closing(Screen()) as screen:
        running = world.start(selected=[MADE_UP], display=screen.name)
        screen.hang()
        # Five seconds after its start the program looks for a tray on the X server, if there is no panel on the bus.
        # Wait for that.
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
