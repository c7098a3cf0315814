"""The environment of a scenario: a panel on its own desktop, the program, the screen and the mouse."""

import json
import shutil
import subprocess
import tempfile

import look
from item import registered_item
from secluded import FLAG
from texts import HINT, MUTE
from waiting import Failed, check, wait_for


class Menu:
    """An open menu. `box` is its area in `picture`; `rows` are (top, bottom) of its texts relative to the box."""

    def __init__(self, picture, box, rows):
        self.picture, self.box, self.rows = picture, box, rows

    def row(self, position):
        """Returns the picture of the entry's row. The separator has no row, so the last entry is one row higher."""
        top, bottom = self.rows[min(position, len(self.rows) - 1)]
        left, above, right, _ = self.box
        return self.picture.crop((left, above + top, right, above + bottom))

    def middle(self, position):
        top, bottom = self.rows[min(position, len(self.rows) - 1)]
        return (self.box[0] + self.box[2]) / 2, self.box[1] + (top + bottom) / 2


class World:
    """`binary` is the built program, with its icons in the folder `icons` beside it."""

    def __init__(self, panel_class, binary, folder, dark=False, scale=1):
        self.built = binary
        self.panel = panel_class(tempfile.mkdtemp(prefix=f"{panel_class.name}-", dir=folder), dark, scale)
        self.desktop, self.screen = self.panel.desktop, self.panel.desktop.screen
        self.program = self.item = self.icon = None
        self._install()
        # A picture of the screen with the panel, before the program runs.
        self.empty = None
        self._rest()

    def _install(self):
        """Installs the program and its icons in the private home folder, so that the panel finds the icons in the icon
        theme. A program beside its icons would name their folder to the panel."""
        programs, data = self.desktop.home / "bin", self.desktop.home / ".local/share"
        for folder in (programs, data):
            folder.mkdir(parents=True)
        self.binary = programs / self.built.name
        for program in (self.built, self.built.with_name("ble-kovra-ui")):
            shutil.copy2(program, programs)
        (data / "icons").symlink_to(self.built.parent / "icons")

    def start_panel(self):
        bare = self.screen.picture()
        self.panel.start()
        within = self.screen.size[0] // 2, round(self.panel.height * self.panel.scale) // 2
        self.empty = self.settled(lambda picture: look.changed(bare, picture).getpixel(within),
                                  "the panel to be painted")

    def prepare(self):
        """Ends the program and removes its files, so that each scenario starts in the same state."""
        self.end_program()
        FLAG.unlink(missing_ok=True)
        for file in (self.preferences, self.autostart):
            file.unlink(missing_ok=True)
        if self.empty is not None:
            self.wait_tray_empty()

    @property
    def preferences(self):
        return self.desktop.home / ".config/ble-kovra/preferences.json"

    @property
    def autostart(self):
        return self.desktop.home / ".config/autostart/org.ble_kovra.BLEKovra.desktop"

    def start_program(self, muted=False, locale=None):
        """Starts the program in mode "always", with the switch on if `muted`. The default language is English."""
        self.preferences.parent.mkdir(parents=True, exist_ok=True)
        self.preferences.write_text(json.dumps({"blockMode": "always", "isEnabled": muted}))
        language = self.language(locale) if locale else {}
        self.program = self.desktop.start("ble-kovra", self.binary, environment=language)
        self.expect_flag(muted)

    def start(self, **how):
        """Starts the program, and waits until the panel shows its icon."""
        self.start_program(**how)
        self.find_item()

    def end_program(self):
        if self.program:
            self.program.kill()
            self.desktop.processes.remove(self.program)
        self.program = self.item = self.icon = None

    def find_item(self):
        """Waits until the watcher lists the item, if the panel shows items, and until the panel shows the icon."""
        if self.panel.takes_items:
            self.item = registered_item(self.desktop.bus, self.program.pid)
        picture = self.settled(self._icon_in, "the icon to appear in the panel")
        self.icon = self._icon_in(picture)

    def wait_tray_empty(self):
        self.settled(lambda picture: self._change_in(picture) is None, "the panel to be empty")

    def _icon_in(self, picture):
        box = self._change_in(picture)
        return box if box and box[2] - box[0] < 48 * self.panel.scale else None

    def _change_in(self, picture):
        """Returns the box of the widest change compared with the empty panel, or None."""
        box = look.widest_group(look.changed(self.empty, picture), gap=round(2 * self.panel.scale))
        # A narrower change is a handle. Some trays add it with their first item, and keep it.
        return box if box and box[2] - box[0] > 10 * self.panel.scale else None

    def language(self, locale):
        """Returns the environment variables for this locale. Compiles the locale, since not every machine has it."""
        folder = self.desktop.folder.parent / "locales"
        folder.mkdir(exist_ok=True)
        made = folder / f"{locale}.UTF-8"
        if not made.exists():
            subprocess.run(["localedef", "--no-warnings=ascii", "-i", locale, "-f", "UTF-8", made], check=True,
                           capture_output=True)
        return {"LC_ALL": made.name, "LOCPATH": str(folder)}

    def flag(self):
        return FLAG.read_text() if FLAG.exists() else None

    def expect_flag(self, muted):
        wanted = "on" if muted else "off"

        def so():
            check(self.program.is_running(), f"the program ended: {self.program.last_words()}")
            return self.flag() == wanted
        wait_for(so, f'the flag to say "{wanted}"')

    def expect_switch(self, muted):
        """Waits until the flag, the preferences and the check mark in the menu agree with `muted`."""
        self.expect_flag(muted)
        wait_for(lambda: json.loads(self.preferences.read_text())["isEnabled"] == muted,
                 f"isEnabled to be stored as {muted}")
        if self.item:
            wait_for(lambda: self.item.checked(MUTE) == muted, f"the check mark to be {muted}")

    def expect_quit(self):
        status = self.program.wait_exit()
        check(status == 0, f"the program ended with status {status}: {self.program.last_words()}")
        check(self.flag() == "off", f'the flag says "{self.flag()}" after the end')

    def settled(self, wanted, text, limit=90):
        """Waits until two pictures of the screen in a row are equal and satisfy `wanted`. Returns that picture."""
        before = [None]

        def same():
            picture = self.screen.picture()
            still = before[0] is not None and picture.tobytes() == before[0].tobytes()
            before[0] = picture
            return picture if still and wanted(picture) else None
        return wait_for(same, text, limit)

    def icon_picture(self):
        return self.settled(lambda picture: True, "a still picture").crop(self.icon)

    def wait_look(self):
        """Waits until the item has the icon for this panel."""
        if self.panel.looks:
            look_of_panel = self.panel.looks[self.panel.dark]
            wait_for(lambda: self.item.property("IconName").removeprefix("ble-kovra").removeprefix("-muted")
                     == look_of_panel, f"the icon {look_of_panel}")
            self.find_item()

    def legibility(self):
        return look.contrast(self.settled(lambda picture: True, "a still picture"), self.icon)

    def open_menu(self, button=3):
        before = self.screen.picture()
        least = round(100 * self.panel.scale)
        self._click_icon(button)
        opened = lambda now: look.menu_box(look.changed(before, now), least)
        try:
            self.settled(opened, "the menu to open", limit=20)
        except Failed:
            # A panel ignores a click on the icon until it has read the menu. So click again, as a user would.
            self._click_icon(button)
            self.settled(opened, "the menu to open at the second click")
        # Only now move the pointer away. A panel may open the menu at the pointer's position.
        self._rest()
        picture = self.settled(opened, "the menu to stay open")
        box = look.menu_box(look.changed(before, picture), least)
        return Menu(picture, box, look.text_rows(picture.crop(box), self.panel.scale))

    def choose(self, position, button=3):
        """Opens the menu and chooses an entry, both with the mouse."""
        menu = self.open_menu(button)
        check(len(menu.rows) == 7, f"the open menu shows {len(menu.rows)} titles")
        self.screen.click(*menu.middle(position))
        self._rest()
        if position != HINT:
            self.settled(lambda now: look.changed(menu.picture, now).getbbox(), "the menu to close")

    def dismiss_menu(self):
        self.screen.click(*self._beside())

    def wait_menu_closed(self):
        least = round(100 * self.panel.scale)
        self.settled(lambda picture: not look.menu_box(look.changed(self.empty, picture), least), "the menu to close")

    def _click_icon(self, button):
        left, top, right, bottom = self.icon
        self.screen.click((left + right) / 2, (top + bottom) / 2, button)

    def _beside(self):
        return self.screen.size[0] / 2, self.screen.size[1] * 0.9

    def _rest(self):
        """Moves the pointer away from the panel and the menu."""
        self.screen.point(*self._beside())

    def leave_behind(self, name):
        """Saves a picture of the screen, and the output of the processes. Returns the path of the picture."""
        kept = self.desktop.folder.parent / f"{name}.png"
        self.screen.picture().save(kept)
        kept.with_suffix(".txt").write_text(self.desktop.last_words())
        return kept

    def close(self):
        self.desktop.close()
