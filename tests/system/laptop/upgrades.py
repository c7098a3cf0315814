"""Scenarios in which another version replaces the packages while the application runs and its settings window is open.

With --earlier the other version is a real one. Otherwise the packages are replaced by themselves.
"""

import contextlib
import os
import signal

from application import BINARY, is_running
from laptop import flag
from people import ANNA
from program import window_processes
from running import scenario
from screen import ESCAPE, Screen
from waiting import check, now, wait_for


def open_settings(laptop, screen):
    """Starts the application again, which opens the settings window of the running one. The second start must end."""
    again = f"DISPLAY={screen.name} timeout 60 {BINARY} </dev/null >/dev/null 2>&1"
    check(laptop.log_in(ANNA).succeeds(again), "the second start has not ended, or failed")
    wait_for(screen.shows_settings, "the settings window")


def close_settings(screen):
    screen.wait_keyboard()
    screen.press(ESCAPE)
    wait_for(lambda: not screen.windows(), "the settings window to close")


def switch_off_and_on(laptop, screen, pad):
    since = now()
    screen.press_hot_key()
    laptop.expect_back_at_once(since, pad)
    screen.press_hot_key()
    laptop.expect_dead(pad)


def replace_while_in_use(laptop, replace):
    """Calls `replace` while a pad is muted and the settings window is open. Expects that everything goes on working."""
    one = laptop.plug_pad(twin=True)
    with contextlib.closing(Screen()) as screen:
        application, mouse = laptop.mute(one, display=screen.name)
        open_settings(laptop, screen)
        shown = window_processes(application.pid)
        since = now()
        replace()
        for device in one.inputs:
            laptop.inhibitions.wait(device, True, laptop.inhibitions.wait(device, False, since))
        application.expect_running()
        check(flag() == "on", f"the flag is {flag()!r}")
        check(screen.shows_settings(), "the settings window has closed")
        check(window_processes(application.pid) == shown, "the window process is another one")
        switch_off_and_on(laptop, screen, one)

        # From now on the running application and its window process are of two versions.
        close_settings(screen)
        for pid in shown:
            os.kill(pid, signal.SIGKILL)
            wait_for(lambda: not is_running(pid), "the window process to end")
        open_settings(laptop, screen)
        check(len(window_processes(application.pid)) == 1, "there is not one window process")
        laptop.expect_dead(one)
        mouse.unplug()
        laptop.expect_back_after_grace(mouse, one)
        mouse = laptop.plug_mouse()
        laptop.expect_dead(one)
        check(screen.shows_settings(), "the settings window of the other version has closed")
        close_settings(screen)

        # The next application is of the other version. It has the same choices.
        application.quit()
        laptop.expect_alive(one)
        application = laptop.start_again(screen.name)
        laptop.expect_dead(one)
        open_settings(laptop, screen)
        application.expect_running()
        mouse.unplug()
        return laptop.expect_back_after_grace(mouse, one)


@scenario("While the packages replace the earlier ones the open settings window stays, and the pad is muted again. The "
          "application of the earlier version works on, with windows of the new one.")
def upgrade_in_use(laptop):
    laptop.install_earlier()
    return replace_while_in_use(laptop, laptop.reinstall)


@scenario("While the packages are replaced by the earlier ones the open settings window stays, and the pad is muted "
          "again. The application works on, with windows of the earlier version.")
def downgrade_in_use(laptop):
    laptop.reinstall()
    try:
        return replace_while_in_use(laptop, laptop.install_earlier)
    finally:
        laptop.reinstall()
