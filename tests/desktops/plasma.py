"""Plasma: its packages, its settings without a screen, and its driver over KWin's interfaces."""

import contextlib
import json
import re

from gi.repository import GLib

import accessible
import kwin
import look
from item import BUS, WATCHER, Caller, item_of_program
from shell import Entry, Shell, Window
from waiting import Failed, check, now, repeat, wait_for

NAME = "plasma"
PACKAGES = ("plasma-desktop", "plasma-workspace", "kwin-wayland", "kwin-x11", "xdg-desktop-portal-kde", "breeze",
            "systemsettings")
ENVIRONMENT = {"XDG_CURRENT_DESKTOP": "KDE", "XDG_SESSION_DESKTOP": "KDE", "DESKTOP_SESSION": "plasma",
               "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "KWIN_SCREENSHOT_NO_PERMISSION_CHECKS": "1",
               "KWIN_WAYLAND_NO_PERMISSION_CHECKS": "1"}
SESSIONS = {"wayland": "/usr/bin/startplasma-wayland", "x11": "/usr/bin/startplasma-x11"}
_DROP_IN = """[Service]
Environment=KWIN_SCREENSHOT_NO_PERMISSION_CHECKS=1 KWIN_WAYLAND_NO_PERMISSION_CHECKS=1
ExecStart=
ExecStart=/usr/bin/kwin_wayland_wrapper --xwayland {} --width 1280 --height 800
"""
FILES = {
    "/etc/systemd/user/plasma-kwin_wayland.service.d/kovra.conf": _DROP_IN.format("--virtual --output-count 2"),
    "/etc/xdg/ksplashrc": "[KSplash]\nEngine=none\nTheme=None\n",
    "/etc/xdg/kscreenlockerrc": "[Daemon]\nAutolock=false\nLockOnResume=false\n",
    "/etc/xdg/kwalletrc": "[Wallet]\nEnabled=false\nFirst Use=false\n",
    "/etc/xdg/baloofilerc": "[Basic Settings]\nIndexing-Enabled=false\n",
    "/etc/xdg/ksmserverrc": "[General]\nloginMode=emptySession\nconfirmLogout=false\n",
    "/etc/xdg/kdeglobals": "[KDE]\nAnimationDurationFactor=0\n",
}
# KWin 6 takes no pictures of a virtual screen without a graphics device. So its screen is a window on an X server.
IN_A_WINDOW = {
    "/etc/systemd/user/plasma-kwin_wayland.service.d/kovra.conf": _DROP_IN.format("--x11-display :0"),
    "/etc/systemd/system/kovra-session-wayland.service.d/kovra.conf":
        "[Unit]\nAfter=kovra-display.service\nRequires=kovra-display.service\n",
}
# The kernel refuses to start programs with capabilities that the container does not have.
COMMANDS = (("sh", "-c", "setcap -r /usr/bin/kwin_wayland || true"),)

WINDOWS = """
const list = workspace.windowList ? workspace.windowList() : workspace.clientList();
const all = list.filter(one => one.normalWindow || one.dialog).map(one => {
    const place = one.frameGeometry;
    return {title: one.caption, app: String(one.desktopFileName || one.resourceClass), has_keyboard: one.active,
            box: [place.x, place.y, place.x + place.width, place.y + place.height].map(Math.round),
            asks_for_attention: one.demandsAttention, pid: one.pid, is_shown: !one.minimized};
});
callDBus("%s", "/kovra", "org.kovra.Test", "Report", JSON.stringify(all));
"""
MOVE = """
workspace.sendClientToScreen(workspace.clientList().find(one => one.caption.startsWith("BLE-kovra")), 1);
callDBus("%s", "/kovra", "org.kovra.Test", "Report", "");
"""
PLASMASHELL = "org.kde.plasmashell"


class Plasma(Shell):
    HAS_TOOL_TIPS = True

    def __init__(self, session):
        super().__init__(session)
        self._scripts = kwin.Scripts(session)
        # The screen of the pictures, and its left edge.
        self._shown_screen, self._left = "Virtual-0", 0
        self._input = self._accessibility = self._without_menu = None

    def is_ready(self):
        bus = Caller(self.session.bus)
        return bus.has_owner(PLASMASHELL) and bus.has_owner(WATCHER) and bus.property(
            WATCHER, "/StatusNotifierWatcher", WATCHER, "IsStatusNotifierHostRegistered")

    def settle(self):
        self._input = kwin.FakeInput(self.session)
        # KWin starts with two screens.
        self.session.run("kscreen-doctor", "output.2.disable")
        self.point(640, 300)
        self.still_picture()

    def close(self):
        if self._input:
            self._input.close()
            self._input = None

    def picture(self):
        return wait_for(lambda: kwin.picture(self.session, self._shown_screen), "a picture of the screen", 20)

    def point(self, x, y):
        self._input.point(x, y)

    def click(self, x, y, button=1, times=1):
        self.point(x, y)
        for is_pressed in (1, 0) * times:
            self._input.button(button, is_pressed)

    def key(self, code, is_pressed):
        self._input.key(code, is_pressed)

    def windows(self):
        return [Window(**one) for one in json.loads(self._scripts.run(WINDOWS))
                if not one["app"].startswith("org.kde.plasmashell")]

    def marks_starts(self):
        # KWin needs OpenGL for that.
        return Caller(self.session.bus).call(kwin.NAME, "/Effects", "org.kde.kwin.Effects", "isEffectSupported",
                                             GLib.Variant("(s)", ("startupfeedback",)))[0]

    def is_busy(self):
        """Returns whether the pointer carries the icon of a program that is starting."""
        return "startupfeedback" in Caller(self.session.bus).property(kwin.NAME, "/Effects", "org.kde.kwin.Effects",
                                                                      "activeEffects")

    @property
    def stays_busy(self):
        if self.session.desktop.is_wayland:
            return "if no window opens, KWin ends the busy pointer after its own 5 s"
        return ""

    def icon(self):
        # In the panel, and no tool tip. An open window has an entry in the task bar, to the left.
        is_icon = lambda box: (box[1] >= self.HEIGHT / self.scale - 60 and box[2] - box[0] < 60
                               and box[0] - self._left >= self.WIDTH / self.scale / 2)
        return next((box for box in self._boxes("BLE-kovra") if is_icon(box)), None)

    def expect_menu(self):
        """Remembers the screen without the menu. Assistive technologies do not see Plasma's menus."""
        self._without_menu = self.still_picture()

    def menu(self):
        """Returns the entries of the open menu, or None. The titles are those that the program has sent."""
        picture = self.picture()
        box = look.menu_box(look.changed(self._without_menu, picture), 100)
        if not box or box[2] - box[0] > 600:
            return None
        box = look.without_shadow(picture, box)
        rows = look.text_rows(picture.crop(box), 1)
        try:
            entries = [entry for entry in item_of_program(self.session.bus).entries() if entry.title]
        except Failed:  # the program has quit, and its menu is about to close
            return None
        if len(rows) != len(entries):
            return None
        found = []
        for entry, (top, bottom) in zip(entries, rows):
            row = [box[0], box[1] + top, box[2], box[1] + bottom]
            # The mark in Plasma's check box is blue.
            mark = picture.crop((row[0], row[1], row[0] + 32, row[3])).getdata()
            is_checked = entry.checked is not None and sum(blue > red + 60 for red, _, blue in mark) > 20
            found.append(Entry(entry.title, is_checked, row))
        return found

    def focus_icon(self):
        """Moves the keyboard to the icon, with Plasma's shortcut for its panels. A blue line marks it."""
        self.press("Super", "Alt", "p")
        left, top, right, _ = self.icon()
        mark = (left, top - 10, right, top)
        for _ in range(20):
            picture = self.still_picture()
            if any(blue > red + 60 for red, _, blue in picture.crop(mark).getdata()):
                return
            self.press("Tab")
        check(False, "the keyboard does not reach the icon")

    def task_entries(self):
        """Returns how many entries the program has in the task bar."""
        return sum(box[2] - box[0] > 40 for box in self._boxes("BLE-kovra"))

    def title_buttons(self, window):
        """Returns the places of the buttons that close and minimize the window."""
        _, top, right, _ = window.box
        return (right - 14, top + 14), (right - 38, top + 14)

    # Settings of the desktop

    def set_scale(self, scale):
        self.session.run("kscreen-doctor", f"output.1.scale.{scale}")
        self.scale = scale
        self.still_picture()

    @contextlib.contextmanager
    def second_screen(self, scale):
        """A second screen, to the right of the first, is the main one within a `with` block. Returns its left edge."""
        self.session.run("kscreen-doctor", "output.2.enable", f"output.2.position.{self.WIDTH},0",
                         f"output.2.scale.{scale}", "output.2.priority.1")
        self._shown_screen, self._left, self.scale = "Virtual-1", self.WIDTH, scale
        try:
            yield self.WIDTH
        finally:
            self.session.run("kscreen-doctor", "output.1.priority.1", "output.2.disable")
            self._shown_screen, self._left, self.scale = "Virtual-0", 0, 1

    def move_window(self, left):
        """Moves the program's window to the second screen."""
        self._scripts.run(MOVE)

    def pixels(self, picture, box):
        return super().pixels(picture, [box[0] - self._left, box[1], box[2] - self._left, box[3]])

    def set_dark(self, is_dark):
        self.session.run("plasma-apply-colorscheme", "BreezeDark" if is_dark else "BreezeLight")

    def set_text_size(self, factor):
        """Sets the size of the general font, as the page "Fonts" of Plasma's settings does."""
        tool = "kwriteconfig5" if self.session.desktop.release == "bookworm" else "kwriteconfig6"
        font = f"Noto Sans,{10 * factor:.0f},-1,5,50,0,0,0,0,0"
        self.session.run(tool, "--file", "kdeglobals", "--group", "General", "--key", "font", font)
        self.session.bus.emit_signal(None, "/KDEPlatformTheme", "org.kde.KDEPlatformTheme", "refreshFonts", None)

    def show_autostart_page(self, world):
        """Opens the page "Autostart" of Plasma's settings, and waits until it shows the entry."""
        world.run("/usr/bin/systemsettings", "kcm_autostart", name="settings")
        shown = lambda: self._shown(lambda thing: thing.has(accessible.SHOWING) and thing.label == "BLE-kovra",
                                    "systemsettings")
        if self.session.desktop.release == "bookworm":
            shown = lambda: self._app_icons(self.picture()) > 100
            world.remark("Plasma 5.27 tells screen readers no entries of this page; the icon was found in a picture")
        try:
            wait_for(shown, "the page to show the program", 60)
            world.keep_picture("autostart")
        finally:
            for pid in world.processes("systemsettings"):
                world.container.run("kill", pid, check_status=False)

    def _app_icons(self, picture):
        """Returns how many pixels of the picture have the main color of the program's icon."""
        icon = self.session.files / "usr/share/icons/hicolor/scalable/apps/ble-kovra.svg"
        color = re.search('fill="#([0-9a-f]{6})"', icon.read_text())[1]
        wanted = tuple(bytes.fromhex(color))
        return sum(one == wanted for one in picture.getdata())

    def launch(self, typed):
        """Types a word in KRunner, as a user does, and starts what it finds."""
        self.session.bus.call_sync("org.kde.krunner", "/App", "org.kde.krunner.App", "display", None, None, 0, 60_000,
                                   None)
        wait_for(lambda: self._shown(lambda thing: thing.has(accessible.SHOWING), "krunner"), "KRunner", 30)
        self.still_picture()
        self.type(typed)
        found = lambda thing: "BLE-kovra" in thing.label and thing.has(accessible.SHOWING)
        wait_for(lambda: self._shown(found, "krunner"), "the launcher to find the program", 30)

        def start():
            # KRunner ignores the key while it arranges what it has found.
            self.still_picture()
            self.press("Return")
        repeat(start, lambda: not self._shown(found, "krunner"), "the launcher to start the program", 30)

    def expect_tool_tip(self, text):
        left, top, right, bottom = self.icon()
        self.point((left + right) // 2, (top + bottom) // 2)
        wait_for(lambda: self._shown(lambda thing: text in thing.label and thing.has(accessible.SHOWING)),
                 f"a tool tip that says {text!r}", 20)

    def restart_panel(self):
        """Restarts the panel's program. Returns the seconds from the end of its start until the icon is back."""
        owner = self._owner()
        Caller(self.session.bus).call("org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                      "org.freedesktop.systemd1.Manager", "RestartUnit",
                                      GLib.Variant("(ss)", ("plasma-plasmashell.service", "replace")))

        wait_for(lambda: self._owner() not in (None, owner), "the panel to restart", 60)
        wait_for(lambda: self._shown(lambda thing: thing.label == "Digital Clock"), "the panel", 60)
        begun = now()
        wait_for(self.icon, "the icon to come back", 30)
        return now() - begun

    def _owner(self):
        with contextlib.suppress(Failed):
            return Caller(self.session.bus).call(*BUS, "GetNameOwner", GLib.Variant("(s)", (PLASMASHELL,)))[0]
        return None

    def log_out(self):
        self.session.bus.call_sync("org.kde.Shutdown", "/Shutdown", "org.kde.Shutdown", "logout", None, None, 0, 10_000,
                                   None)

    def _boxes(self, label):
        """Returns the places of what the panel shows under this name. What disappears meanwhile is left out."""
        boxes = []
        for thing in self._shown(lambda thing: thing.label == label):
            with contextlib.suppress(Failed):
                boxes.append(thing.box)
        return boxes

    def _shown(self, wanted, by="plasmashell"):
        """Returns what this program shows and is wanted."""
        if self._accessibility is None:
            self._accessibility = accessible.Accessibility(self.session)
        program = self._accessibility.program(by)
        found = []
        for thing in program.all() if program else ():
            with contextlib.suppress(Failed):
                if wanted(thing):
                    found.append(thing)
        return found

SHELL_CLASS = Plasma
