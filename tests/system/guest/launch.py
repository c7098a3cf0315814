"""Scenarios of the last step of launch, which checks whether the driver is active, and shows an alert if it is not."""

import contextlib
import os
import pathlib
import signal

import driver
from desktop import ACTIVATE, PLAIN, SLASHED, choose, expect_icon
from flag import STATE
from plugging import MADE_UP
from program import HOME
from running import scenario
from screen import ESCAPE, RETURN, SETTINGS, SPACE, TAB, Screen
from waiting import check, now, stay_until, wait_for

MANAGER_IS_MISSING = f"ble-kovra: Manager не найден по пути {driver.MANAGER}"
CALLED = HOME / "called"


def put_manager():
    """Installs a manager that records its PID and its arguments, and runs for 60 s."""
    driver.put(driver.MANAGER, f'#!/bin/sh\necho "$$ $*" >{CALLED}.new\nmv {CALLED}.new {CALLED}\nexec sleep 60\n')


def processes():
    """Returns the PID, the state and the parent's PID of each process."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            with contextlib.suppress(OSError):
                state, parent = (entry / "stat").read_text().rpartition(")")[2].split()[:2]
                found.append((int(entry.name), state, int(parent)))
    return found


def has_ended(pid):
    # A zombie counts as ended, since the first process of the machine may reap it late.
    return not any(process == pid and state != "Z" for process, state, _ in processes())


def expect_end(world, running, since):
    status = running.wait_exit()
    check(status == 0, f"it ended with {status}: {running.last_words()}")
    world.flag.wait_write("off", since)


@scenario("While the listing tool hangs all earlier steps work. Then the alert opens; \"Later\" has no other effect.")
def explained(world):
    put_manager()
    with contextlib.closing(Screen()) as screen:
        tool = driver.Hanging(HOME, STATE, "activated waiting for user")
        running = world.start(selected=[MADE_UP], display=screen.name)
        flag = wait_for(tool.started, "the tool to be started")[1]
        check(flag == "off", f"when the tool started, the flag was {flag!r}")
        expect_icon(world, PLAIN)
        mouse = world.plug("Kovra Mouse")
        world.expect_on(mouse)
        expect_icon(world, SLASHED)
        for written in ("off", "on"):
            pressed = now()
            screen.press_hot_key()
            world.flag.wait_write(written, pressed)
        check(not screen.windows(), f"there are windows before the tool has answered: {screen.windows()}")

        tool.release()
        screen.wait_alerts(1)
        mouse.unplug()
        world.expect_off_after_grace(mouse)
        second = world.start(wait=False, selected=[MADE_UP], display=screen.name)
        check(second.wait_exit() == 0, f"the second start printed {second.last_words()}")
        wait_for(lambda: SETTINGS in screen.windows(), "the settings window that the second start opens")
        check(len(screen.alerts()) == 1, "the alert was closed")

        screen.wait_keyboard_of_alert()
        screen.press(TAB)
        screen.press(SPACE)
        screen.wait_alerts(0)
        world.expect_on(world.plug("Kovra Mouse"))
        check(not CALLED.exists(), f"the manager was started: {CALLED}")
        check(running.is_running(), f"the program ended: {running.last_words()}")


@scenario("If the user opens the alert from the menu while the listing tool runs, launch does not show it again.")
def explained_once(world):
    for is_open_when_the_tool_ends in (False, True):
        with contextlib.closing(Screen()) as screen:
            tool = driver.Hanging(HOME, STATE, "activated waiting for user")
            running = world.start(display=screen.name)
            pid = wait_for(tool.started, "the tool to be started")[0]
            wait_for(lambda: choose(world, ACTIVATE), "the menu to be on the bus")
            screen.wait_alerts(1)
            if is_open_when_the_tool_ends:
                tool.release()
                wait_for(lambda: has_ended(pid), "the tool to end")
            screen.answer_alert(ESCAPE)
            if not is_open_when_the_tool_ends:
                tool.release()
                wait_for(lambda: has_ended(pid), "the tool to end")
            stay_until(now() + 2)
            check(not screen.alerts(), "the alert opened again")
            check(running.is_running(), f"the program ended: {running.last_words()}")
            running.send(signal.SIGTERM)
            check(running.wait_exit() == 0, f"it ended with {running.last_words()}")


@scenario("The alert's first button starts the manager with \"forceActivate\"; the manager outlives the program.")
def manager(world):
    put_manager()
    driver.put(driver.TOOL, driver.listing("terminated waiting to uninstall on reboot"))
    with contextlib.closing(Screen()) as screen:
        running = world.start(display=screen.name)
        screen.wait_alerts(1)
        screen.answer_alert(RETURN)
        pid, arguments = wait_for(lambda: CALLED.exists() and CALLED.read_text().split(), "the manager to be started")
        check(arguments == "forceActivate", f"the manager's argument was {arguments!r}")
        os.kill(int(pid), signal.SIGSTOP)  # the program must end although the manager does not
        since = now()
        running.send(signal.SIGTERM)
        check(running.wait_exit() == 0, f"it ended with {running.last_words()}")
        check(not has_ended(int(pid)), "the manager ended with the program")
        os.kill(int(pid), signal.SIGKILL)
    return f"ended after {now() - since:.2f} s"


@scenario("Without the manager the first button only logs one line. A missing listing tool logs nothing.")
def manager_missing(world):
    driver.TOOL.unlink()
    with contextlib.closing(Screen()) as screen:
        running = world.start(display=screen.name)
        screen.wait_alerts(1)
        check(not world.journal.messages, f"the log contains {world.journal.messages}")
        screen.answer_alert(RETURN)
        wait_for(lambda: world.journal.messages, "a line in the log")
        check(world.journal.messages == [MANAGER_IS_MISSING], f"the log contains {world.journal.messages}")
        check(running.is_running(), f"the program ended: {running.last_words()}")


@scenario("SIGTERM while the tool hangs unmutes the trackpad at once, shows no alert, and terminates the tool.")
def end_while_the_tool_hangs(world):
    with contextlib.closing(Screen()) as screen:
        tool = driver.Hanging(HOME, STATE, "activated disabled")
        running = world.start(selected=[MADE_UP], display=screen.name)
        pid, _ = wait_for(tool.started, "the tool to be started")
        world.expect_on(world.plug("Kovra Mouse"))
        since = now()
        running.send(signal.SIGTERM)
        expect_end(world, running, since)
        wait_for(lambda: has_ended(pid), "the tool to end")
        check(not screen.windows(), f"there are windows: {screen.windows()}")
    return f"off after {world.flag.writes[-1].time - since:.2f} s"


@scenario("SIGTERM with the alert open unmutes the trackpad at once, closes the alert, and starts nothing.")
def end_with_the_alert_open(world):
    put_manager()
    driver.put(driver.TOOL, "#!/bin/sh\nexit 1\n")
    with contextlib.closing(Screen()) as screen:
        running = world.start(selected=[MADE_UP], display=screen.name)
        screen.wait_alerts(1)
        world.expect_on(world.plug("Kovra Mouse"))
        zombies = [pid for pid, state, parent in processes() if state == "Z" and parent == running.pid]
        check(not zombies, f"zombies: {zombies}")
        since = now()
        running.send(signal.SIGTERM)
        expect_end(world, running, since)
        screen.wait_alerts(0)
        check(not CALLED.exists(), "the manager was started")
    return f"off after {world.flag.writes[-1].time - since:.2f} s"
