"""A scenario in which a screen reader reads the program's windows in each language."""

import ast
import json
import pathlib
import re
import subprocess
import sys
import tempfile

import spoken_windows
from desktop import X11Desktop
from devices import Devices
from item import PROGRAM, Caller, item_of_program
from scenarios import scenario
from spoken_windows import BUTTON, BUTTONS
from texts import ABOUT, ACTIVATE, MUTE, TEXTS
from waiting import check, now, wait_for

READER = pathlib.Path(__file__).resolve().parents[1] / "platform/linux/ui/screen_reader.py"
# The names of three mice. The first two are chosen, and DISCONNECTED is unplugged during the scenario.
CONNECTED, DISCONNECTED, NAMELESS = "Mouse", "Rat", ""


@scenario("A screen reader reads the settings window, with the advice for GNOME, and both alerts word for word as in the "
          "tables of six languages.",
          only_on="xfce4-panel")
def windows_in_six_languages(world):
    people = []
    try:
        for locale in TEXTS:
            people.append(Person(world, locale))
        # Each step is done for all languages before the next step, so that the grace periods of 2 s overlap.
        for step in (Person.open_windows, Person.read_no_devices, Person.plug, Person.read_mice, Person.unplug,
                     Person.read_disconnected_mouse, Person.unmute, Person.read_active_trackpad):
            for person in people:
                step(person)
    finally:
        for person in people:
            person.leave()


class Person:
    """A user whose language is that of `locale`, with a desktop, the running program and a screen reader."""

    def __init__(self, world, locale):
        self._locale, self._texts, self._binary = locale, TEXTS[locale], world.binary
        self._desktop = X11Desktop(tempfile.mkdtemp(prefix=f"{locale}-", dir=world.desktop.folder))
        self._devices = Devices()
        self._environment = {**world.language(locale), **self._devices.environment,
                             "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
                             # This desktop has no tray, so the window says how to get one on GNOME.
                             "XDG_CURRENT_DESKTOP": "GNOME"}
        chosen = [Devices.key(CONNECTED, 1), Devices.key(DISCONNECTED, 2)]
        self._desktop.configure("ble-kovra/preferences.json", json.dumps({
            "blockMode": "onDevice", "isEnabled": True, "selectedDeviceIDs": chosen}))
        self._start("ble-kovra")

    def leave(self):
        self._desktop.close()

    def open_windows(self):
        wait_for(lambda: Caller(self._desktop.bus).has_owner(PROGRAM), "the program")
        check(self._start("second").wait_exit() == 0, "starting the program again failed")
        wait_for(lambda: self._desktop.screen.window("BLE-kovra"), "the settings window")
        self._item = item_of_program(self._desktop.bus)
        self._item.choose(ACTIVATE)
        self._item.choose(ABOUT)

    def read_no_devices(self):
        self._expect([("label", self._texts["settings.noDevices"], False)], "status.active")

    def plug(self):
        self._nodes = [self._devices.plug(name) for name in (CONNECTED, DISCONNECTED, NAMELESS)]

    def read_mice(self):
        both = [("check box", CONNECTED, True), ("check box", DISCONNECTED, True)]
        self._expect([*both, self._nameless], "status.blocked")

    def unplug(self):
        self._devices.unplug(self._nodes[1])

    def read_disconnected_mouse(self):
        self._expect([("check box", CONNECTED, True), self._nameless, self._disconnected], "status.blocked")

    def unmute(self):
        self._item.choose(MUTE)

    def read_active_trackpad(self):
        self._expect([("check box", CONNECTED, True), self._nameless, self._disconnected], "status.active", is_on=False)

    @property
    def _nameless(self):
        return "check box", self._texts["device.unknown"], False

    @property
    def _disconnected(self):
        return "check box", f'{DISCONNECTED}, {self._texts["device.disconnected"]}', True

    def _expect(self, devices, status, is_on=True):
        text = self._texts
        wanted = (spoken_windows.settings(text, devices, status, is_on, advice=True) | spoken_windows.driver(text) |
                  spoken_windows.about(text))
        deadline = now() + 15
        while (found := self._read()) != wanted:
            check(now() < deadline, f"in {self._locale} the windows contain {found}\n        and not {wanted}")

    def _read(self):
        """Runs the screen reader. Returns each window's named objects: {(role, title): [(role, name, is checked)]}.

        If the screen reader fails, returns its error output instead.
        """
        reading = subprocess.run([sys.executable, "-W", "ignore", READER, "read"], env=self._desktop.environment,
                                 capture_output=True, text=True, timeout=90)
        if reading.returncode != 0:
            return reading.stderr
        windows = {}
        for indent, role, name, states in re.findall(r"^( *)(\S.*?) ('.*'|\".*\")(.*)$", reading.stdout, re.M):
            name = ast.literal_eval(name)
            role = BUTTON if role in BUTTONS else role
            if len(indent) == 2:
                inside = windows.setdefault((role, name), [])
            elif len(indent) > 2 and name:
                inside.append((role, name, "checked" in states.split()))
        return {window: sorted(texts) for window, texts in windows.items()}

    def _start(self, name):
        return self._desktop.start(name, self._binary, environment=self._environment)
