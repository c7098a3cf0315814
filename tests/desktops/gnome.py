"""GNOME Shell: its packages, its settings without a screen, and its driver, which lets the shell itself report."""

import contextlib
import io
import json

from gi.repository import GLib
from PIL import Image

from item import Caller
from shell import KEYS, Entry, Shell, Window
from waiting import Failed, check, now, repeat, wait_for

NAME = "gnome"
PACKAGES = ("gnome-shell", "gnome-session", "gnome-shell-extension-appindicator", "xdg-desktop-portal-gnome",
            "dconf-cli", "dconf-gsettings-backend")
ENVIRONMENT = {"XDG_CURRENT_DESKTOP": "GNOME", "XDG_SESSION_DESKTOP": "gnome", "DESKTOP_SESSION": "gnome"}
SESSIONS = {"wayland": "/usr/bin/gnome-session --session=gnome", "x11": "/usr/bin/gnome-session --session=gnome"}
_DROP_IN = "[Service]\nExecStart=\nExecStart=/usr/bin/gnome-shell --unsafe-mode {}\n"
FILES = {
    "/etc/systemd/user/org.gnome.Shell@wayland.service.d/kovra.conf":
        _DROP_IN.format("--headless --virtual-monitor 1920x1200 --virtual-monitor 1920x1200"),
    "/etc/systemd/user/org.gnome.Shell@x11.service.d/kovra.conf": _DROP_IN.format("--x11"),
    "/etc/dconf/profile/user": "user-db:user\nsystem-db:local\n",
    "/etc/dconf/db/local.d/kovra": """[org/gnome/shell]
enabled-extensions=['ubuntu-appindicators@ubuntu.com']
welcome-dialog-last-shown-version='99.0'
[org/gnome/desktop/interface]
enable-animations=false
[org/gnome/desktop/screensaver]
lock-enabled=false
[org/gnome/mutter]
experimental-features=['scale-monitor-framebuffer']
[org/gnome/desktop/session]
idle-delay=uint32 0
""",
}
COMMANDS = (("dconf", "update"),)

SHELL = ("org.gnome.Shell", "/org/gnome/Shell", "org.gnome.Shell")
SCREENSHOT = ("org.gnome.Shell.Screenshot", "/org/gnome/Shell/Screenshot", "org.gnome.Shell.Screenshot")
DISPLAYS = ("org.gnome.Mutter.DisplayConfig", "/org/gnome/Mutter/DisplayConfig", "org.gnome.Mutter.DisplayConfig")
PICTURE = "/tmp/kovra-picture.png"
# Code that the shell evaluates before each piece of ours.
PRELUDE = """
const C = imports.gi.Clutter;
globalThis.kovra ??= (() => {
    const backend = C.get_default_backend ? C.get_default_backend() : global.stage.context.get_backend();
    const seat = backend.get_default_seat();
    return {pointer: seat.create_virtual_device(C.InputDeviceType.POINTER_DEVICE),
            keyboard: seat.create_virtual_device(C.InputDeviceType.KEYBOARD_DEVICE)};
})();
const now = () => imports.gi.GLib.get_monotonic_time();
const boxOf = actor => {
    const [x, y] = actor.get_transformed_position(), [width, height] = actor.get_transformed_size();
    // Before its first layout, an actor has no place.
    return isNaN(x + y + width + height) ? null : [x, y, x + width, y + height].map(Math.round);
};
const indicators = () => Object.entries(Main.panel.statusArea).filter(([key, one]) =>
    key.startsWith('appindicator-')).map(([key, one]) => one);
const indicator = () => indicators().find(one => one._indicator?.id === 'ble-kovra');
"""


class Gnome(Shell):
    HAS_TOOL_TIPS = False
    OWN_COMPLAINTS = {
        "does not support activation":
            "at a double click GNOME's AppIndicator extension logs that the icon has nothing but a menu",
        "st_widget_get_theme_node called on the widget":
            "GNOME Shell may log errors about icons of its own overview, which it names after the program",
    } | Shell.OWN_COMPLAINTS
    WIDTH, HEIGHT = 1920, 1200

    @property
    def _bus(self):
        return Caller(self.session.bus, 60)

    def evaluate(self, code):
        """Returns the value of an expression in the shell's JavaScript."""
        whole = f"(() => {{ {PRELUDE} return {code}; }})()"
        succeeded, value = self._bus.call(*SHELL, "Eval", GLib.Variant("(s)", (whole,)))
        check(succeeded, f"GNOME Shell cannot evaluate {code}: {value}")
        return json.loads(value) if value else None

    def is_ready(self):
        return self._bus.has_owner(SHELL[0]) and self.evaluate("Main.layoutManager._startingUp") is False

    def settle(self):
        """The session starts with two screens, in the overview, with a notification that it cannot be locked."""
        if self.CAN_SCALE:
            self.set_scale(1)
        self.evaluate("Main.messageTray.getSources().forEach(one => one.destroy())")
        self.evaluate("Main.overview.hide()")
        wait_for(lambda: not self.evaluate("Main.overview.visible"), "the overview to close")

    def picture(self):
        done, _ = self._bus.call(*SCREENSHOT, "Screenshot", GLib.Variant("(bbs)", (False, False, PICTURE)))
        check(done, "GNOME Shell takes no picture")
        return Image.open(io.BytesIO((self.session.files / PICTURE.lstrip("/")).read_bytes())).convert("RGB")

    def point(self, x, y):
        self.evaluate(f"kovra.pointer.notify_absolute_motion(now(), {x}, {y})")

    def click(self, x, y, button=1, times=1):
        self.point(x, y)
        # What lies below the pointer is known after the shell has handled the motion.
        wait_for(lambda: self.evaluate("global.get_pointer().slice(0, 2)") == [x, y], "the pointer to arrive", 20)
        for state in ("PRESSED", "RELEASED") * times:
            self.evaluate(f"kovra.pointer.notify_button(now(), {button}, C.ButtonState.{state})")

    def press(self, *names):
        # In one piece, so that no key is held long enough to repeat.
        codes = [KEYS[name] for name in names]
        self.evaluate(f"""[{codes}.forEach(code => kovra.keyboard.notify_key(now(), code, C.KeyState.PRESSED)),
            {codes[::-1]}.forEach(code => kovra.keyboard.notify_key(now(), code, C.KeyState.RELEASED))] && null""")

    def windows(self):
        return [Window(**one) for one in self.evaluate("""global.get_window_actors().map(actor => actor.meta_window)
            .filter(one => [0, 3, 4].includes(one.get_window_type())).map(one => {
                const frame = one.get_frame_rect(), tracker = imports.gi.Shell.WindowTracker.get_default();
                return {title: one.get_title() ?? '', app: tracker.get_window_app(one)?.get_id() ?? '',
                        box: [frame.x, frame.y, frame.x + frame.width, frame.y + frame.height],
                        has_keyboard: one.has_focus(), asks_for_attention: one.demands_attention || one.urgent,
                        pid: one.get_pid(), is_shown: !one.minimized};
            })""")]

    def is_busy(self):
        return self.evaluate("imports.gi.Shell.WindowTracker.get_default().get_startup_sequences()"
                             ".filter(one => !one.get_completed()).map(one => one.get_id())")

    def icon(self):
        # The icon of a program that has ended has no name, and stays in the panel for half a second.
        return self.evaluate("(one => one?.visible ? boxOf(one._icon ?? one) : null)(indicator() ?? indicators()[0])")

    def menu(self):
        """Returns the entries of the open menu, or None. At first they lack titles or places."""
        entries = self.evaluate("""indicator()?.menu?.isOpen ? indicator().menu._getMenuItems().filter(one =>
            one.actor?.visible ?? one.visible).map(one => ({title: one.label?.text ?? '', is_checked:
            one._ornament === 2, box: boxOf(one.actor ?? one)})) : null""")
        if not entries or not any(one["title"] for one in entries) or not all(one["box"] for one in entries):
            return None
        return [Entry(**one) for one in entries]

    def focus_icon(self):
        """Moves the keyboard to the icon, as the page of shortcuts in GNOME's settings says."""
        self.press("Control", "Alt", "Tab")
        on_panel = "!!global.stage.key_focus && Main.panel.contains(global.stage.key_focus)"
        wait_for(lambda: self.evaluate(f"{on_panel} && Main.modalCount === 0"), "the keyboard on the panel", 20)
        focus = lambda: self.evaluate("String(global.stage.key_focus).split(' ')[0]")
        while not self.evaluate("global.stage.key_focus === indicator()"):
            before = focus()
            self.press("Tab")
            wait_for(lambda: focus() != before, "the keyboard to move on", 20)

    def choose_first_entry(self):
        # The menu ignores keys until it has the keyboard. It never gets it if GNOME 48 closes its switcher, which
        # focus_icon() has opened, only afterwards.
        try:
            self._select_first_entry(8)
        except Failed:
            self.press("Escape")
            self.focus_icon()
            self.press("Return")
            wait_for(self.menu, "the menu to open", 20)
            self._select_first_entry(20)
        self.press("Return")

    def _select_first_entry(self, limit):
        repeat(lambda: self.press("Down"), lambda: self.evaluate("indicator().menu._getMenuItems()[0].active"),
               "the first entry to be selected", limit, patience=2)

    def accept_key(self, dialogue):
        """Clicks the button "Add" of the dialogue for a hot key."""
        _, top, right, _ = dialogue.box
        self.click(right - 37, top + 23)

    def title_buttons(self, window):
        """Returns the places of the buttons that close and minimize the window. GNOME's windows have only the first."""
        _, top, right, _ = window.box
        return (right - 24, top + 20), None

    # Settings of the desktop

    def set_scale(self, scale):
        """Sets the scale of the first screen, and turns the second one off."""
        self._show([(scale, 0, True)])
        self.scale = scale

    @contextlib.contextmanager
    def second_screen(self, scale):
        """A second screen, to the right of the first, is the main one within a `with` block. Returns its left edge."""
        self._show([(1, 0, False), (scale, self.WIDTH, True)])
        # A picture shows both, at the larger scale.
        self.WIDTH += round(self.WIDTH / scale)
        try:
            yield type(self).WIDTH
        finally:
            del self.WIDTH
            self.set_scale(1)

    def move_window(self, left):
        """Moves the program's window to the screen with this left edge."""
        self.evaluate(f"""(one => one.move_to_monitor([...Array(global.display.get_n_monitors()).keys()].find(place =>
            global.display.get_monitor_geometry(place).x === {left})))(global.get_window_actors().map(actor =>
            actor.meta_window).find(one => one.get_title() === 'BLE-kovra')) ?? null""")

    def _show(self, screens):
        """Turns on as many screens as there are tuples of scale, left edge, and whether it is the main one."""
        serial, monitors, _, _ = self._bus.call(*DISPLAYS, "GetCurrentState")
        shown = []
        for (scale, left, is_main), monitor in zip(screens, monitors):
            (connector, *_), ((mode, _, _, _, _, scales, _), *_), _ = monitor
            known = min(scales, key=lambda one: abs(one - scale))
            check(abs(known - scale) < 0.01, f"GNOME offers the scales {scales}")
            shown.append((left, 0, known, 0, is_main, [(connector, mode, {})]))
        temporarily, logical = 1, GLib.Variant("u", 1)
        self._bus.call(*DISPLAYS, "ApplyMonitorsConfig", GLib.Variant(
            "(uua(iiduba(ssa{sv}))a{sv})", (serial, temporarily, shown, {"layout-mode": logical})))

    def set_dark(self, is_dark):
        self._set("org.gnome.desktop.interface", "color-scheme", "prefer-dark" if is_dark else "default")

    def set_text_size(self, factor):
        self._set("org.gnome.desktop.interface", "text-scaling-factor", str(factor))

    cannot_lock = "GNOME locks the screen only if its login manager GDM has started the session"

    def show_autostart_page(self, world):
        """Reads the entry with GLib, in the shell itself."""
        path = f"/{world.autostart.relative_to(self.session.files)}"
        shown = self.evaluate(f"""(one => one && [one.get_display_name(), one.get_icon().to_string()])(
            imports.gi.Gio.DesktopAppInfo.new_from_filename('{path}'))""")
        check(shown and shown[0] == "BLE-kovra", f"GLib reads from the entry: {shown}")
        check(list(self.session.files.glob(f"usr/share/icons/hicolor/*/apps/{shown[1]}.*")), f"no icon {shown[1]}")
        world.remark("GNOME's settings have no page for it; the entry was read with GLib, as GNOME Tweaks does")

    @property
    def focus_levels(self):
        desktop = self.session.desktop
        return ("strict",) if desktop.is_wayland and desktop.release != "bookworm" else ()

    @property
    def focus_remark(self):
        if self.focus_levels:
            return 'with focus-new-windows="smart", GNOME gives the keyboard to each new window'
        return super().focus_remark

    @contextlib.contextmanager
    def focus_level(self, level):
        """How much the desktop prevents new windows from taking the keyboard, within a `with` block."""
        self._set("org.gnome.desktop.wm.preferences", "focus-new-windows", level)
        try:
            yield
        finally:
            self._set("org.gnome.desktop.wm.preferences", "focus-new-windows", "smart")

    def _set(self, schema, key, value):
        self.session.run("gsettings", "set", schema, key, value)

    def launch(self, typed):
        """Types a word in the overview, as a user does, and starts what it finds."""
        self.press("Super")
        wait_for(lambda: self.evaluate("Main.overview.visible"), "the overview")
        self.type(typed)
        wait_for(lambda: self.evaluate("Main.overview.searchController?.searchActive ?? "
                                       "Main.overview._overview.controls._searchController.searchActive"), "the search")
        self._wait_found()
        self.press("Return")
        wait_for(lambda: not self.evaluate("Main.overview.visible"), "the overview to close")

    def _wait_found(self):
        results = "Main.overview._overview._controls._searchController._searchResults"
        wait_for(lambda: self.evaluate(f"{results}._defaultResult?.app?.get_id()") == self.session.ENTRY,
                 "the search to find the program")

    def task_entries(self):
        """Returns how often the program is among the running programs."""
        return self.evaluate(f"imports.gi.Shell.AppSystem.get_default().get_running().filter(one => one.get_id() === "
                             f"'{self.session.ENTRY}').length")

    def restart_panel(self):
        """Turns the extension that shows the icons off and on again. Returns the seconds until the icon is back."""
        self._set_extension("Disable")
        wait_for(lambda: self.icon() is None, "the icon to leave the panel")
        begun = now()
        self._set_extension("Enable")
        wait_for(self.icon, "the icon to come back", 30)
        return now() - begun

    def _set_extension(self, verb):
        self._bus.call(SHELL[0], SHELL[1], "org.gnome.Shell.Extensions", f"{verb}Extension",
                       GLib.Variant("(s)", ("ubuntu-appindicators@ubuntu.com",)))

    def log_out(self):
        # 1 is GSM_LOGOUT_MODE_NO_CONFIRMATION
        self._bus.call("org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager", "Logout",
                       GLib.Variant("(u)", (1,)))


SHELL_CLASS = Gnome
