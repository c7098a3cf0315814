"""Scenarios in which the window process waits for an answer, hangs or is killed."""

import os
import pathlib
import signal

from scenarios import scenario
from texts import ABOUT, ACTIVATE, MUTE, QUIT, SETTINGS
from waiting import check, now, wait_for

HOST = "xfce4-panel"


@scenario("While an alert is open the menu works, and SIGTERM ends the program cleanly and at once.", only_on=HOST)
def alert_open(world):
    world.start(muted=True)
    world.item.choose(ABOUT)
    _expect_window_process(world)
    _expect_working_menu(world)
    for _ in range(3):
        world.item.choose(ABOUT)
    world.item.choose(ACTIVATE)
    _expect_working_menu(world)
    _expect_quick_end(world, lambda: os.kill(world.program.pid, signal.SIGTERM))


@scenario("A hanging window process delays neither the menu nor the hot key nor quitting, and is ended too.",
          only_on=HOST)
def window_process_hangs(world):
    world.start(muted=True)
    world.item.choose(SETTINGS)
    window = _expect_window_process(world)
    wait_for(lambda: world.screen.window("BLE-kovra"), "the settings window")
    os.kill(window, signal.SIGSTOP)
    for muted in (False, True):
        world.screen.press("Control_L", "Alt_L", "t")
        world.expect_switch(muted)
    for entry in (SETTINGS, ABOUT, SETTINGS, ACTIVATE):
        world.item.choose(entry)
        _expect_working_menu(world)
    _expect_quick_end(world, lambda: world.item.choose(QUIT))
    wait_for(lambda: not _is_running(window), "the window process to end")


@scenario("If the window process is killed, the next window opens normally, and open alerts count as closed.",
          only_on=HOST)
def window_process_killed(world):
    world.start(muted=True)
    for entry in (SETTINGS, ABOUT, ACTIVATE, SETTINGS):
        world.item.choose(entry)
        os.kill(_expect_window_process(world), signal.SIGKILL)
        wait_for(lambda: not _window_processes(world), "the window process to end")
        _expect_working_menu(world)
    _expect_quick_end(world, lambda: world.item.choose(QUIT))


def _expect_working_menu(world):
    for muted in (False, True):
        world.item.choose(MUTE)
        world.expect_switch(muted)


def _expect_quick_end(world, end):
    start = now()
    end()
    world.expect_quit()
    check(now() - start < 2, f"the end took {now() - start:.1f} s")


def _expect_window_process(world):
    """Waits until there is exactly one window process. Returns its PID."""
    wait_for(lambda: len(_window_processes(world)) == 1, "the window process")
    return _window_processes(world)[0]


def _window_processes(world):
    children = pathlib.Path(f"/proc/{world.program.pid}/task/{world.program.pid}/children").read_text().split()
    return [int(child) for child in children if _is_running(int(child))]


def _is_running(process):
    try:
        return pathlib.Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()[0] != "Z"
    except (FileNotFoundError, ProcessLookupError):
        return False
