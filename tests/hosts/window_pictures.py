#!/usr/bin/python3
"""Takes the pictures of the settings window and the alerts for docs/pictures, from the running program."""

import argparse
import contextlib
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "tests/system/guest"))

import secluded
from sheets import LANGUAGES, save, sheet

# Names as real devices report them, since users see the pictures.
THREE = ["Logitech MX Master 3S", "Apple Magic Mouse", "Microsoft Arc Mouse"]
THIRTY = THREE + ["Dell MS3320W", "HP 435 Multi-Device Mouse", "Lenovo Go Wireless Mouse", "Logitech G502 HERO",
                  "Logitech Lift", "Logitech M185", "Logitech M330 SILENT", "Logitech M510", "Logitech M590",
                  "Logitech M720 Triathlon", "Logitech MX Anywhere 3", "Logitech MX Ergo", "Logitech MX Vertical",
                  "Logitech Pebble M350", "Microsoft Bluetooth Mouse", "Microsoft Ergonomic Mouse",
                  "Microsoft Modern Mobile Mouse", "Microsoft Surface Mouse", "Razer Basilisk V3", "Razer DeathAdder V2",
                  "Razer Orochi V2", "Razer Pro Click", "Razer Viper Mini", "SteelSeries Rival 3",
                  "ThinkPad Bluetooth Mouse", "Trust Yvi Wireless Mouse", "Kensington Pro Fit"]
STATES = ("empty", "three", "thirty", "muted")
# The colors of a light and of a dark desktop: window, text, fields, buttons. Each color is red, green and blue.
LOOKS = {"light": ("239,240,241", "35,38,41", "255,255,255", "252,252,252"),
         "dark": ("42,46,50", "252,252,252", "27,30,32", "49,54,59")}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("binary", nargs="?", default=ROOT / "build/release/ble-kovra", help="the program to show")
    parser.add_argument("--into", type=pathlib.Path, default=ROOT / "docs/pictures", help="the folder for the pictures")
    parser.add_argument("--language", action="append", metavar="LOCALE", help="only this one; may be repeated")
    arguments = parser.parse_args()
    into = arguments.into.resolve()
    into.mkdir(parents=True, exist_ok=True)
    folder = pathlib.Path(tempfile.mkdtemp(prefix="kovra-pictures-"))
    folder.chmod(0o755)
    secluded.seclude()
    secluded.adopt_orphans()
    take = Camera(pathlib.Path(arguments.binary).resolve(), folder, arguments.language or list(LANGUAGES))
    try:
        for look in ("light", "dark"):
            save(sheet(take.windows(look, 1)), into / f"window-{look}.png")
            large = list(take.windows(look, 2))
            save(sheet(large), into / f"window-200-{look}.png")
            if look == "light":
                _, of_first_language = large[STATES.index("three")][0]
                save(of_first_language, into / "window.png")
        save(sheet([*take.alerts("light", 1), *take.alerts("dark", 1)]), into / "alerts.png")
        save(sheet([*take.alerts("light", 2), *take.alerts("dark", 2)]), into / "alerts-200.png")
    finally:
        secluded.end_descendants()
        shutil.rmtree(folder)


class Camera:
    def __init__(self, binary, folder, locales):
        self._binary, self._folder, self._locales = binary, folder, locales
        self._compiled = folder / "locales"
        self._compiled.mkdir()
        for locale in locales:
            subprocess.run(["localedef", "--no-warnings=ascii", "-i", locale, "-f", "UTF-8",
                            self._compiled / f"{locale}.UTF-8"], check=True, capture_output=True)

    def windows(self, look, scale):
        """Yields a row of pictures for each state: the settings window in each language."""
        for state in STATES:
            row = []
            for locale in self._locales:
                with self._running(look, scale, locale, state) as session:
                    session.start_again()
                    row.append((f"{LANGUAGES[locale]}, {look}, {state}, {scale}x", session.window()))
            yield row

    def alerts(self, look, scale):
        """Yields rows of pictures: each alert in each language, with at most three languages in a row."""
        from texts import ABOUT, ACTIVATE
        for entry in (ACTIVATE, ABOUT):
            row = []
            for locale in self._locales:
                with self._running(look, scale, locale, "empty") as session:
                    session.choose(entry)
                    row.append((f"{LANGUAGES[locale]}, {look}, {scale}x", session.window()))
            yield from filter(None, (row[:3], row[3:]))

    @contextlib.contextmanager
    def _running(self, look, scale, locale, state):
        session = Session(self._binary, tempfile.mkdtemp(dir=self._folder), look, scale)
        try:
            session.start({"LC_ALL": f"{locale}.UTF-8", "LOCPATH": str(self._compiled)}, state)
            yield session
        finally:
            session.close()


class Session:
    def __init__(self, binary, folder, look, scale):
        from desktop import X11Desktop
        from devices import Devices

        class Large(X11Desktop):
            extent = "2560x1600"
        self._binary = binary
        self._desktop = Large(folder, XDG_CURRENT_DESKTOP="KDE", KDE_SESSION_VERSION="5", QT_SCALE_FACTOR=str(scale))
        paper, ink, field, button = LOOKS[look]
        self._desktop.configure("kdeglobals", f"""[General]
font=DejaVu Sans,10,-1,5,50,0,0,0,0,0
[Colors:Window]
BackgroundNormal={paper}
ForegroundNormal={ink}
[Colors:View]
BackgroundNormal={field}
ForegroundNormal={ink}
ForegroundLink=41,128,185
[Colors:Button]
BackgroundNormal={button}
ForegroundNormal={ink}
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252
""")
        self._devices = Devices()

    def start(self, language, state):
        from waiting import wait_for
        names = {"three": THREE, "muted": THREE, "thirty": THIRTY}.get(state, [])
        nodes = [self._devices.plug(name) for name in names]
        chosen = [self._devices.key(name, number) for number, name in enumerate(names, 1)]
        wanted = {"blockMode": "onDevice", "isEnabled": True,
                  # The first mouse is chosen. Of thirty mice the fifth and the sixth are chosen as well.
                  "selectedDeviceIDs": chosen[:1] + chosen[4:6]}
        self._desktop.configure("ble-kovra/preferences.json", json.dumps(wanted))
        self._environment = {**self._devices.environment, **language}
        self._program = self._desktop.start("ble-kovra", self._binary, environment=self._environment)
        muted = bool(nodes)
        wait_for(lambda: secluded.FLAG.exists() and secluded.FLAG.read_text() == ("on" if muted else "off"), "the flag")
        if state in ("three", "thirty"):
            for node in nodes[:1] + nodes[4:]:
                self._devices.unplug(node)
            wait_for(lambda: secluded.FLAG.read_text() == "off", "the mouse to be disconnected")

    def start_again(self):
        self._desktop.start("second", self._binary, environment=self._environment).wait_exit()

    def choose(self, entry):
        from item import item_of_program
        item_of_program(self._desktop.bus).choose(entry)

    def window(self):
        """Waits until the program's window is painted and no longer changes. Returns a picture of it."""
        from waiting import wait_for
        before = [None]

        def still():
            place = self._desktop.screen.window("BLE-kovra")
            picture = place and self._desktop.screen.picture().crop(place)
            same = picture and before[0] and picture.tobytes() == before[0].tobytes()
            before[0] = picture
            return picture if same and len(picture.getcolors(1 << 24)) > 20 else None
        return wait_for(still, "the window to stop changing")

    def close(self):
        self._program.kill()
        self._desktop.close()
        secluded.FLAG.unlink(missing_ok=True)


main()
