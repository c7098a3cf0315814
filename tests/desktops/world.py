"""The environment of a scenario: a booted container, a person's session in it, the program, the mice."""

import contextlib
import json
import os
import shutil
import time

from gi.repository import GLib

from container import Container
from desktops import PERSON, PERSON_ID
from devices import Devices
from item import PROGRAM, Caller, Program, item_of_program
from editor import Editor
from key_dialogue import KeyDialogue
from reader import ScreenReader
from session import Session
from texts import ENGLISH, TEXTS
from waiting import Failed, check, now, wait_for

# Where the simulated devices are in the container.
MICE = "tmp/kovra-mice"
BINARY = "/usr/bin/ble-kovra"
HELPER = "ble-kovra-helper.service"
TITLES = TEXTS[ENGLISH]
# How often somebody clicks who wants to see the menu.
CLICKS = 4
# The preferences of a user whom the desktop has asked for the hot key.
ASKED = {"hotKeyRequested": True}


class NotPossible(Exception):
    """Raised by a scenario that a desktop does not allow. The text says why, for users."""


class World:
    """`layers` are the folders of the root. `kept` is the folder for pictures and logs."""

    def __init__(self, desktop, layers, kept):
        self.desktop, self._layers, self._kept = desktop, layers, kept
        self.container = self.session = None
        self.item = None
        self.remarks = []
        self.boot_seconds = self.session_seconds = 0
        self._stack = contextlib.ExitStack()

    def open(self):
        """Boots the container and starts the session."""
        begun = now()
        self.container = self._stack.enter_context(Container(self._layers))
        self.boot_seconds = now() - begun
        self.session = Session(self.desktop, self.container)
        self._stack.callback(self.session.close)
        self.session.start()
        self.session_seconds = now() - begun - self.boot_seconds

    def close(self):
        self._stack.close()

    @property
    def shell(self):
        return self.session.shell

    @property
    def bus(self):
        return Caller(self.session.bus)

    @property
    def key_dialogue(self):
        return KeyDialogue(self.desktop, self.shell)

    def remark(self, text):
        """Adds a remark for users to the scenario's cell in the table."""
        if text not in self.remarks:
            self.remarks.append(text)

    # The program

    def prepare(self):
        """Ends the program and removes its files, so that each scenario starts in the same state."""
        self.remarks.clear()
        self.end_program()
        for file in (self.preferences, self.autostart):
            file.unlink(missing_ok=True)
        wait_for(lambda: self.shell.icon() is None, "the icon to leave the panel")

    @property
    def preferences(self):
        return self.session.home / ".config/ble-kovra/preferences.json"

    @property
    def autostart(self):
        return self.session.home / f".config/autostart/{self.session.ENTRY}"

    def choose(self, **preferences):
        """Writes the preferences that the program reads at its start."""
        folder = self.preferences.parent.relative_to(self.session.files)
        self.container.run("mkdir", "-p", f"/{folder}", user=PERSON)
        self.preferences.write_text(json.dumps(preferences))
        os.chown(self.preferences, PERSON_ID, PERSON_ID)

    def processes(self, name="ble-kovra"):
        """Returns the numbers of the running programs with this name, in the container."""
        return [int(word) for word in self.container.run("pgrep", "-x", name, check_status=False).split()]

    def end_program(self):
        for pid in self.processes():
            self.container.run("kill", "-TERM", pid, check_status=False)
        wait_for(lambda: not self.processes(), "the program to end", 20)
        self.item = None

    def start(self, muted=False, **preferences):
        """Starts the program as a service of the session, which no launcher has started."""
        self.choose(**{"blockMode": "always", "isEnabled": muted, **ASKED, **preferences})
        self.run(BINARY)
        self.find_item()
        self.expect_flag(muted)

    def start_with_mouse(self):
        """Starts the program with a chosen mouse that is not plugged in. Returns the simulated devices."""
        mice = self.mice()
        self.choose(blockMode="onDevice", isEnabled=True, selectedDeviceIDs=[mice.key("Mouse", 1)], **ASKED)
        self.run(BINARY, **mice.environment)
        self.find_item()
        self.expect_flag(False)
        return mice

    def run(self, *command, name=PROGRAM, **variables):
        """Starts a program in the session as a unit of the session's service manager, as desktops do."""
        name = f"app-{name}-{time.monotonic_ns()}.service"
        properties = [("ExecStart", GLib.Variant("a(sasb)", [(command[0], list(command), False)])),
                      ("CollectMode", GLib.Variant("s", "inactive-or-failed")),
                      ("Environment", GLib.Variant("as", [f"{key}={value}" for key, value in variables.items()]))]
        self.bus.call("org.freedesktop.systemd1", "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager",
                      "StartTransientUnit", GLib.Variant("(ssa(sv)a(sa(sv)))", (name, "fail", properties, [])))

    def find_item(self):
        """Waits until the program is on the bus and its icon is in the panel."""
        wait_for(lambda: self.bus.has_owner(PROGRAM), "the program on the bus", 30)
        wait_for(self._has_icon, "the icon to appear in the panel", 60)
        self.item = item_of_program(self.session.bus)

    def _has_icon(self):
        check(self.processes(), "the program ended")
        return self.shell.icon()

    @property
    def program(self):
        return Program(self.session.bus)

    def has_flag(self, muted):
        return self.session.flag() == ("on" if muted else "off")

    def expect_flag(self, muted, limit=20):
        wait_for(lambda: self.has_flag(muted), f'the flag to say "{"on" if muted else "off"}"', limit)

    def mice(self):
        """Returns simulated devices for programs that run() starts with their environment."""
        place = self.session.files / MICE
        shutil.rmtree(place, ignore_errors=True)
        place.mkdir()
        place.chmod(0o777)
        return Devices(place, f"/{MICE}")

    # The icon and its menu

    def rest(self):
        """Moves the pointer away from the panel."""
        self.shell.point(640, 400)

    def icon_picture(self, wanted=lambda icon: True, text="the icon"):
        """Waits until the icon stands still and its picture satisfies `wanted`. Returns that picture."""
        self.rest()
        taken = lambda picture: picture.crop(self.shell.icon_in(picture))
        return taken(self.shell.still_picture(lambda picture: wanted(taken(picture)), text, 20))

    def click_icon(self, button=1, times=1):
        left, top, right, bottom = wait_for(self.shell.icon, "the icon", 20)
        self.shell.click((left + right) // 2, (top + bottom) // 2, button, times)

    def open_menu(self, button=1):
        """Clicks the icon, and returns the entries that the open menu shows."""
        # A panel ignores a click on the icon until it has read the menu. So click again, as a user would.
        for attempt in range(CLICKS):
            if attempt > 0:
                self.shell.press("Escape")
                self.rest()
            self.shell.expect_menu()
            self.click_icon(button)
            with contextlib.suppress(Failed):
                return wait_for(self.shell.menu, "the menu to open", 5)
        raise Failed(f"the menu does not open at {CLICKS} clicks")

    def close_menu(self):
        self.shell.press("Escape")
        wait_for(lambda: not self.shell.menu(), "the menu to close", 20)

    def choose_entry(self, title, button=1):
        self.open_menu(button)
        left, top, right, bottom = self._resting_entry(title).box
        self.shell.click((left + right) // 2, (top + bottom) // 2)
        wait_for(lambda: not self.shell.menu(), "the menu to close", 20)

    def _resting_entry(self, title):
        """Waits until the open menu has the entry at the same place twice in a row. Returns the entry."""
        seen = [None]

        def rests():
            before, seen[0] = seen[0], next((one for one in self.shell.menu() or [] if one.title == title), None)
            return seen[0] if seen[0] and seen[0] == before else None
        return wait_for(rests, f"the entry {title!r}", 20)

    # The window

    def window(self):
        """Returns the settings window, or None."""
        return self._one_window(lambda window: not _is_alert(window))

    def alert(self):
        """Returns the alert, or None."""
        return self._one_window(_is_alert)

    def close_alert(self):
        """Presses Escape until the alert closes. One that nobody requested ignores early keys."""
        def closes():
            self.shell.press("Escape")
            return not self.alert()
        wait_for(closes, "the alert to close", 20)

    def _one_window(self, wanted):
        # A desktop may number windows with equal titles.
        found = [one for one in self.shell.windows() if one.title.startswith("BLE-kovra") and wanted(one)]
        check(len(found) < 2, f"there are {len(found)} windows")
        return found[0] if found else None

    def window_or_hint(self):
        """Returns the window if it has the keyboard, or if the desktop says that it asks for attention; or None."""
        window = self.window()
        return window if window and (window.has_keyboard or window.asks_for_attention) else None

    def expect_window_in_front(self):
        def so():
            window = self.window()
            return window and window.has_keyboard and window
        window = wait_for(so, "the window in front, with the keyboard", 30)
        return window

    def expect_centered(self, window):
        """Expects that what `window` returns is in the middle of the screen, without the panel. Wayland decides itself."""
        def is_centered():
            left, top, right, bottom = window().box
            return (abs(left + right - self.shell.WIDTH) <= 4 and
                    abs(top + bottom - self.shell.HEIGHT) <= self.shell.THICKEST_PANEL)
        if self.desktop.is_wayland:
            return
        try:
            wait_for(is_centered, "the window in the middle of the screen", 5)
        except Failed as failure:
            raise Failed(f"{failure}: it is at {window().box}") from None

    def close_settings(self):
        """Closes the window, which need not have the keyboard: a click on it comes first."""
        self.bring_to_front()
        self.close_window()

    def close_window(self):
        self.shell.press("Escape")
        wait_for(lambda: not self.window(), "the window to close", 20)

    def bring_to_front(self):
        """Clicks the window as a person does who looks for it. Returns it."""
        left, top, right, _ = self.window().box
        self.shell.click((left + right) // 2, top + 60)
        return self.expect_window_in_front()

    # The person and the system

    @contextlib.contextmanager
    def without_helper(self):
        """The service is disabled, so that the program starts with an alert."""
        self.container.run("systemctl", "disable", "--now", HELPER)
        try:
            yield
        finally:
            self.end_program()
            self.container.run("systemctl", "enable", "--now", HELPER)

    def editor(self):
        return Editor(self)

    def screen_reader(self):
        return ScreenReader(self.session, self.bus)

    def log_in_again(self):
        """Logs out, and in again."""
        self.shell.log_out()
        wait_for(lambda: not self.processes(), "the program to end", 30)
        self.session.restart()
        self.item = None

    # What is left behind

    def keep_picture(self, name, window=None):
        """Keeps a picture of the screen for people to look at. It shows what `window` returns, such as window()."""
        def shows(picture):
            shown = window and window()
            return window is None or (shown and self.shell.paper(picture, shown))
        self.shell.still_picture(shows, "a picture of the window").save(self._kept / f"{self.desktop.name}-{name}.png")

    def leave_behind(self, name):
        """Saves a picture of the screen and the journal. Returns the path of the picture."""
        kept = self._kept / f"{name}.png"
        with contextlib.suppress(Exception):
            self.shell.picture().save(kept)
        with contextlib.suppress(Exception):
            kept.with_suffix(".txt").write_text(self.session.journal("-b"))
        return kept


def _is_alert(window):
    """Alerts have the same title as the settings, but they are low."""
    return window.box[3] - window.box[1] < 400
