"""What a scenario finds: a running panel on its own desktop, the program to start, eyes and a hand."""

import json
import subprocess
import tempfile

import look
from item import registered_item
from secluded import FLAG
from texts import HINT, MUTE
from waiting import check, wait_for


class Menu:
    """An open menu on the screen."""

    def __init__(self, picture, box, rows):
        self.picture, self.box, self.rows = picture, box, rows

    def row(self, position):
        """The picture of the row with this title; the separator, between the last two titles, has none."""
        top, bottom = self.rows[min(position, len(self.rows) - 1)]
        left, above, right, _ = self.box
        return self.picture.crop((left, above + top, right, above + bottom))

    def middle(self, position):
        top, bottom = self.rows[min(position, len(self.rows) - 1)]
        return (self.box[0] + self.box[2]) / 2, self.box[1] + (top + bottom) / 2


class World:
    def __init__(self, panel_class, binary, folder, dark=False, scale=1):
        self.binary = binary
        self.panel = panel_class(tempfile.mkdtemp(prefix=f"{panel_class.name}-", dir=folder), dark, scale)
        self.desktop, self.screen = self.panel.desktop, self.panel.desktop.screen
        self.program = self.item = self.icon = None
        # The panel without our item.
        self.empty = None
        self._rest()

    # The panel.

    def start_panel(self):
        bare = self.screen.picture()
        self.panel.start()
        within = self.screen.size[0] // 2, round(self.panel.height * self.panel.scale) // 2
        self.empty = self.settled(lambda picture: look.changed(bare, picture).getpixel(within), "the panel to be painted")

    # The program.

    def prepare(self):
        """A clean start for each scenario: no program, and none of its files."""
        self.end_program()
        FLAG.unlink(missing_ok=True)
        for file in (self.preferences, self.autostart):
            file.unlink(missing_ok=True)
        if self.empty is not None:
            self.no_icon()

    @property
    def preferences(self):
        return self.desktop.home / ".config/ble-kovra/preferences.json"

    @property
    def autostart(self):
        return self.desktop.home / ".config/autostart/org.ble_kovra.BLEKovra.desktop"

    def start_program(self, muted=False, locale=None):
        """Starts the program, which then mutes always or never. Without a locale it speaks English."""
        self.preferences.parent.mkdir(parents=True, exist_ok=True)
        self.preferences.write_text(json.dumps({"blockMode": "always", "isEnabled": muted}))
        language = self.language(locale) if locale else {}
        self.program = self.desktop.start("ble-kovra", self.binary, environment=language)
        self.expect_flag(muted)

    def start(self, **how):
        """The same, and returns when its item is in the panel."""
        self.start_program(**how)
        self.find_item()

    def end_program(self):
        if self.program:
            self.program.kill()
            self.desktop.processes.remove(self.program)
        self.program = self.item = self.icon = None

    def find_item(self):
        """Waits for the item at the watcher, where the host has one, and for the icon in the panel."""
        if self.panel.takes_items:
            self.item = registered_item(self.desktop.bus, self.program.pid)
        picture = self.settled(self._icon_in, "the icon to appear in the panel")
        self.icon = self._icon_in(picture)

    def no_icon(self):
        """Returns when nothing is on the screen but the panel with an empty tray."""
        self.settled(lambda picture: self._news_in(picture) is None, "the panel to be empty")

    def _icon_in(self, picture):
        box = self._news_in(picture)
        return box if box and box[2] - box[0] < 48 * self.panel.scale else None

    def _news_in(self, picture):
        """The box of the widest thing on the screen that is not the empty panel's."""
        box = look.widest_group(look.changed(self.empty, picture), gap=round(2 * self.panel.scale))
        # Narrower is only a handle, which a tray may bring with its first item, and keep.
        return box if box and box[2] - box[0] > 10 * self.panel.scale else None

    def language(self, locale):
        """What of the environment makes a program speak it. The locale is made for it: not every machine has them."""
        folder = self.desktop.folder / "locales"
        folder.mkdir(exist_ok=True)
        made = folder / f"{locale}.UTF-8"
        if not made.exists():
            subprocess.run(["localedef", "--no-warnings=ascii", "-i", locale, "-f", "UTF-8", made], check=True,
                           capture_output=True)
        return {"LC_ALL": made.name, "LOCPATH": str(folder)}

    # What it did.

    def flag(self):
        return FLAG.read_text() if FLAG.exists() else None

    def expect_flag(self, muted):
        wanted = "on" if muted else "off"

        def so():
            check(self.program.is_running(), f"the program ended: {self.program.last_words()}")
            return self.flag() == wanted
        wait_for(so, f'the flag to say "{wanted}"')

    def expect_switch(self, muted):
        """Flag, preferences and the check mark on the bus agree on this."""
        self.expect_flag(muted)
        wait_for(lambda: json.loads(self.preferences.read_text())["isEnabled"] == muted, f"isEnabled to be stored as {muted}")
        if self.item:
            wait_for(lambda: self.item.checked(MUTE) == muted, f"the check mark to be {muted}")

    def expect_quit(self):
        status = self.program.wait_exit()
        check(status == 0, f"the program ended with status {status}: {self.program.last_words()}")
        check(self.flag() == "off", f'the flag says "{self.flag()}" after the end')

    # Eyes.

    def settled(self, wanted, text):
        """The first picture that is as wanted and the same as the one before."""
        before = [None]

        def same():
            picture = self.screen.picture()
            still = before[0] is not None and picture.tobytes() == before[0].tobytes()
            before[0] = picture
            return picture if still and wanted(picture) else None
        return wait_for(same, text)

    def icon_picture(self):
        return self.settled(lambda picture: True, "a still picture").crop(self.icon)

    def legibility(self):
        return look.contrast(self.settled(lambda picture: True, "a still picture"), self.icon)

    # A hand.

    def open_menu(self, button=3):
        """Clicks the icon; returns the menu that opens."""
        before = self.screen.picture()
        least = round(100 * self.panel.scale)
        self._click_icon(button)
        opened = lambda now: look.menu_box(look.changed(before, now), least)
        self.settled(opened, "the menu to open")
        # Only now, for a panel may ask where the pointer is.
        self._rest()
        picture = self.settled(opened, "the menu to stay open")
        box = look.menu_box(look.changed(before, picture), least)
        return Menu(picture, box, look.text_rows(picture.crop(box), self.panel.scale))

    def choose(self, position, button=3):
        """Opens the menu and chooses one of its entries, both with the mouse."""
        menu = self.open_menu(button)
        check(len(menu.rows) == 7, f"the open menu shows {len(menu.rows)} titles")
        self.screen.click(*menu.middle(position))
        self._rest()
        if position != HINT:
            self.settled(lambda now: look.changed(menu.picture, now).getbbox(), "the menu to close")

    def dismiss_menu(self):
        self.screen.click(*self._beside())

    def no_menu(self):
        """Returns when none is open."""
        least = round(100 * self.panel.scale)
        self.settled(lambda picture: not look.menu_box(look.changed(self.empty, picture), least), "the menu to close")

    def _click_icon(self, button):
        left, top, right, bottom = self.icon
        self.screen.click((left + right) / 2, (top + bottom) / 2, button)

    def _beside(self):
        return self.screen.size[0] / 2, self.screen.size[1] * 0.9

    def _rest(self):
        """The pointer away from everything."""
        self.screen.point(*self._beside())

    def leave_behind(self, name):
        """Keeps what the screen shows and what the processes said; returns where."""
        kept = self.desktop.folder.parent / f"{name}.png"
        self.screen.picture().save(kept)
        kept.with_suffix(".txt").write_text(self.desktop.last_words())
        return kept

    def close(self):
        self.desktop.close()
