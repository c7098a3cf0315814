"""Scenarios of the status item. Each runs on all panels that show items, or only on the panel `only_on`."""

from Xlib import X

import look
from item import Program
from panels import WaybarWithoutPortal
from texts import ABOUT, ACTIVATE, ENGLISH, HINT, LAUNCH_AT_LOGIN, LOCALES, MUTE, QUIT, SETTINGS, TEXTS, titles
from waiting import check, now, stay_until, wait_for
from world import World

SCENARIOS = {}

def scenario(sentence, only_on=None):
    """Registers a function as a scenario. The sentence states what the program promises."""
    def add(function):
        SCENARIOS[function.__name__] = (sentence, only_on, function)
        return function
    return add


@scenario("The item registers with the panel's watcher, and the panel shows its icon.")
def found(world):
    world.start()
    wanted = {"Id": "ble-kovra", "Title": "BLE-kovra", "Status": "Active", "Category": "Hardware", "ItemIsMenu": True}
    for which, value in wanted.items():
        check(world.item.property(which) == value, f"{which} is {world.item.property(which)!r}")
    left, top, right, bottom = world.icon
    shape = (right - left) / (bottom - top)
    check(1.1 < shape < 1.5, f"the icon is {right - left} wide and {bottom - top} high")


def _has_hot_key(world):
    # sway has no portal for shortcuts, and so no key for the program.
    return world.panel.name != "waybar"


def _expect_titles(world, locale, hint=None):
    # The hint changes once the desktop has answered.
    wanted = titles(locale, _has_hot_key(world))
    if hint is not None:
        wanted[HINT] = TEXTS[locale][hint]
    wait_for(lambda: [entry.title for entry in world.item.entries()] == wanted, f"the titles in {locale}")


@scenario("All ways to read the menu return the same entries, with check marks, shortcuts and the disabled hint.")
def read_over_the_bus(world):
    world.start(muted=True)
    _expect_titles(world, ENGLISH)
    entries = world.item.entries()
    check([entry.checked for entry in entries] == [True, None, None, False, None, None, None, None],
          f"the check marks are {[entry.checked for entry in entries]}")
    enabled = [entry.properties.get("enabled", True) for entry in entries]
    check(enabled == [position != HINT for position in range(8)], f"the enabled entries are {enabled}")
    shortcuts = {position: entry.properties["shortcut"] for position, entry in enumerate(entries)
                 if "shortcut" in entry.properties}
    wanted = {SETTINGS: [["Control", world.panel.comma]], QUIT: [["Control", "q"]]}
    check(shortcuts == wanted, f"the shortcuts are {shortcuts}")
    again = world.item.properties_of_entries([entry.number for entry in entries])
    check(again == {entry.number: entry.properties for entry in entries}, f"queried by number they are {again}")


@scenario("The program reports over the bus which tray shows its icon and who has the hot key, and performs actions.")
def asked_over_the_bus(world):
    world.start(muted=True)
    program = Program(world.desktop.bus)
    wait_for(lambda: program.property("Tray") == "panel", "the program to report the panel")
    wanted = "ours" if _has_hot_key(world) else "unavailable"
    wait_for(lambda: program.property("HotKey") == wanted, f"the hot key to be {wanted}")
    check(program.property("SessionBusFailures") == [], f"failures: {program.property('SessionBusFailures')}")
    for action, muted in (("toggle", False), ("toggle", True), ("off", False), ("off", False), ("on", True)):
        program.perform(action)
        world.expect_switch(muted)
        check(program.property("Enabled") == muted and program.property("Muting") == muted, f"after {action}")
    program.perform("quit")
    world.expect_quit()


@scenario("The menu is available in each of the six languages.")
def six_languages(world):
    for locale in LOCALES:
        world.prepare()
        world.start(locale=locale)
        _expect_titles(world, locale)
        menu = world.open_menu()
        check(len(menu.rows) == 7, f"in {locale} the open menu shows {len(menu.rows)} titles")
        world.dismiss_menu()


@scenario("The menu says in each of the six languages that another program uses the hot key.", only_on="xfce4-panel")
def hot_key_held(world):
    with world.screen.holding("t", X.ControlMask | X.Mod1Mask):
        for locale in LOCALES:
            world.prepare()
            world.start(locale=locale)
            _expect_titles(world, locale, "menu.hotkeyHint.taken")


@scenario("Each menu entry has its effect, and no other, when the host reports that it was chosen.")
def chosen_over_the_bus(world):
    _try_each_entry(world, lambda position: world.item.choose(position))


@scenario("Each menu entry has its effect, and no other, when it is chosen with the mouse.")
def chosen_with_the_mouse(world):
    _try_each_entry(world, world.choose)


@scenario("The left and the right mouse button open the menu, which shows the check marks.")
def opened_with_the_mouse(world):
    world.start(muted=False)
    for button in (1, 3):
        unchecked = world.open_menu(button)
        check(len(unchecked.rows) == 7, f"button {button}: the open menu shows {len(unchecked.rows)} titles")
        world.dismiss_menu()
        world.item.choose(MUTE)
        world.expect_switch(True)
        world.wait_menu_closed()
        checked = world.open_menu(button)
        world.dismiss_menu()
        for position in (MUTE, HINT, SETTINGS, LAUNCH_AT_LOGIN, ACTIVATE, ABOUT, QUIT):
            same = checked.row(position).tobytes() == unchecked.row(position).tobytes()
            outcome = "did not change" if same else "changed"
            check(same == (position != MUTE), f"button {button}: row {position} {outcome}")
        world.item.choose(MUTE)
        world.expect_switch(False)
        world.wait_menu_closed()


@scenario("The icon has a slash exactly while the trackpad is muted.")
def slash(world):
    world.start(muted=False)
    plain = world.settled(lambda picture: True, "a still picture")
    for _ in range(2):
        world.item.choose(MUTE)
        muted = world.settled(lambda now: look.changed(plain, now).getbbox(), "the icon to change")
        check(look.is_slash(look.changed(plain, muted)), "the change in the icon is not a slash")
        world.item.choose(MUTE)
        world.settled(lambda now: not look.changed(plain, now).getbbox(), "the plain icon to return")


@scenario("\"Launch at login\" shows the state of the desktop's entry, even if the host flips the mark by itself.")
def launch_at_login(world):
    world.start()
    unchecked = _glance(world)
    world.prepare()
    world.autostart.parent.mkdir(parents=True, exist_ok=True)
    world.autostart.write_text("[Desktop Entry]\nType=Application\nName=BLE-kovra\nExec=/bin/true\n")
    world.start()
    check(world.item.checked(LAUNCH_AT_LOGIN), "there is no check mark although the entry exists")
    checked = _glance(world)
    same = checked.row(LAUNCH_AT_LOGIN).tobytes() == unchecked.row(LAUNCH_AT_LOGIN).tobytes()
    check(not same, "the check mark is not visible")
    for _ in range(2):
        world.choose(LAUNCH_AT_LOGIN)
        world.wait_menu_closed()
        wait_for(lambda: world.item.checked(LAUNCH_AT_LOGIN) == world.autostart.exists(),
                 "the check mark to agree with the entry")
        if world.autostart.exists():
            entry = world.autostart.read_text()
            check(f"Exec={world.binary}" in entry, f"the entry contains {entry}")
        row = _glance(world).row(LAUNCH_AT_LOGIN).tobytes()
        wanted = checked if world.autostart.exists() else unchecked
        check(row == wanted.row(LAUNCH_AT_LOGIN).tobytes(), "the menu does not show the state of the entry")


@scenario("After the panel was killed and started again the item is back unchanged.")
def panel_restarted(world):
    # Restart the panel, because it still draws a frame around the icon that an earlier scenario clicked.
    world.panel.kill()
    world.panel.start()
    world.start(muted=True)
    before = world.icon_picture()
    world.panel.kill()
    world.panel.start()
    world.find_item()
    check(world.icon_picture().tobytes() == before.tobytes(), "the icon came back changed")
    world.choose(MUTE)
    world.expect_switch(False)


@scenario("The item appears in a panel that starts ten seconds after the program.")
def late_panel(world):
    world.panel.kill()
    world.start_program(muted=True)
    stay_until(now() + 10)
    world.panel.start()
    world.find_item()
    world.choose(MUTE)
    world.expect_switch(False)


@scenario("The icon is legible on a light and on a dark panel, plain and muted, at every scale.")
def legible(world):
    return _measure_contrasts(world, type(world.panel), world.panel.scales)


@scenario("The icon is legible in a tray that embeds windows, on a light and on a dark one.", only_on="trayer")
def legible_embedded(world):
    return _measure_contrasts(world, type(world.panel), world.panel.scales)


@scenario("The icon is legible on a panel of which nothing is known.", only_on="waybar")
def legible_without_portal(world):
    return _measure_contrasts(world, WaybarWithoutPortal, [1])


@scenario("The icon takes the colors of another color scheme while it is shown.", only_on="waybar")
def scheme_changed(world):
    world.start()
    before = world.item.property("IconName")
    check(before == "ble-kovra-outlined-dark", f"on a light desktop the icon is {before}")
    light = world.icon_picture()
    try:
        world.panel.dark = True
        world.panel.restart_portal()
        wait_for(lambda: world.item.property("IconName") == "ble-kovra-outlined-light", "the icon for a dark desktop")
        world.settled(lambda picture: picture.crop(world.icon).tobytes() != light.tobytes(), "the icon to be repainted")
    finally:
        world.panel.dark = False
        world.panel.restart_portal()
    world.settled(lambda picture: picture.crop(world.icon).tobytes() == light.tobytes(), "the icon to be as before")


# The minimum for texts of normal size in the Web Content Accessibility Guidelines. For icons these require 3.
LEAST_CONTRAST = 4.5


def _measure_contrasts(world, panel, scales):
    measured = []
    for dark in (False, True):
        for scale in scales:
            fresh = World(panel, world.built, world.desktop.folder, dark, scale)
            try:
                fresh.start_panel()
                for muted in (False, True):
                    fresh.prepare()
                    fresh.start(muted=muted)
                    fresh.wait_look()
                    ratio = fresh.legibility()
                    state = f"{'dark' if dark else 'light'} {scale}x {'muted' if muted else 'plain'}"
                    measured.append(f"{state} {ratio:.1f}")
                    check(ratio >= LEAST_CONTRAST, f"contrasts: {', '.join(measured)}")
                    width = (fresh.icon[2] - fresh.icon[0]) / scale
                    check(12 <= width <= 24, f"{state}: the icon is {width:.1f} points wide")
            finally:
                fresh.end_program()
                fresh.close()
    return "contrasts: " + ", ".join(measured)


@scenario("Without a host of items the icon appears in a tray that embeds windows, and works the same.",
          only_on="trayer")
def embedded(world):
    world.start(muted=False)
    tray = Program(world.desktop.bus).property("Tray")
    check(tray == "embedded", f"the program reports {tray}")
    plain = world.settled(lambda picture: True, "a still picture")
    for button in (1, 3):
        unchecked = _glance(world, button)
        world.choose(MUTE, button)
        world.expect_switch(True)
        muted = world.settled(lambda now: look.changed(plain, now).getbbox(), "the icon to change")
        check(look.is_slash(look.changed(plain, muted)), "the change in the icon is not a slash")
        checked = _glance(world, button)
        check(checked.row(MUTE).tobytes() != unchecked.row(MUTE).tobytes(), "the open menu shows no check mark")
        world.choose(MUTE, button)
        world.expect_switch(False)
        world.settled(lambda now: not look.changed(plain, now).getbbox(), "the plain icon to return")
    world.panel.kill()
    world.panel.start()
    world.find_item()
    world.choose(HINT)
    world.dismiss_menu()
    world.wait_menu_closed()
    world.expect_switch(False)
    world.choose(MUTE)
    world.expect_switch(True)
    world.choose(QUIT)
    world.expect_quit()
    world.wait_tray_empty()


@scenario("While the menu, the settings or an alert have the keyboard, Ctrl+, opens the settings, Ctrl+Q quits, and "
          "Escape and Ctrl+W close.", only_on="trayer")
def keys(world):
    close, settings, end = ("Control_L", "w"), ("Control_L", "comma"), ("Control_L", "q")
    for opened_by in (SETTINGS, ABOUT, None):
        world.prepare()
        world.start(muted=True)
        for pressed in (("Escape",), close):
            _open_for_keys(world, opened_by)
            world.screen.press(*pressed)
            wait_for(lambda: not world.screen.windows("BLE-kovra"), f"{pressed} to close it")
        _open_for_keys(world, opened_by)
        world.screen.press(*settings)
        wait_for(lambda: _settings_are_open(world), "the settings to open")
        if opened_by is None:
            wait_for(lambda: world.screen.has_keyboard("BLE-kovra"), "the settings to have the keyboard")
            world.screen.press(*close)
            wait_for(lambda: not world.screen.windows("BLE-kovra"), "the settings to close")
            _open_for_keys(world, opened_by)
        world.screen.press(*end)
        world.expect_quit()


def _open_for_keys(world, entry):
    """Chooses the entry, or only opens the menu if it is None. Waits until the keyboard belongs to what has opened."""
    if entry is None:
        world.open_menu()
        return
    world.choose(entry)
    wait_for(lambda: world.screen.has_keyboard("BLE-kovra"), "the window to have the keyboard")


def _settings_are_open(world):
    return any(right - left == 440 for left, _, right, _ in world.screen.windows("BLE-kovra"))


def _glance(world, button=3):
    """Opens the menu, closes it, and returns it as it was while it was open."""
    menu = world.open_menu(button)
    world.dismiss_menu()
    world.wait_menu_closed()
    return menu


def _try_each_entry(world, choose):
    world.start(muted=True)
    choose(MUTE)
    world.expect_switch(False)
    world.wait_menu_closed()
    choose(MUTE)
    world.expect_switch(True)
    world.wait_menu_closed()
    choose(HINT)
    world.dismiss_menu()
    world.wait_menu_closed()
    _expect_unharmed(world)
    # spoken.py and window_process.py test the windows that SETTINGS, ACTIVATE and ABOUT open.
    for position in (LAUNCH_AT_LOGIN, SETTINGS, ACTIVATE, ABOUT):
        world.prepare()
        world.start(muted=True)
        choose(position)
        _expect_unharmed(world)
    world.prepare()
    world.start(muted=True)
    choose(QUIT)
    world.expect_quit()
    world.wait_tray_empty()


def _expect_unharmed(world):
    """Expects that the program is running, answers on the bus, and still mutes."""
    world.item.entries()
    world.expect_switch(True)
    check(world.program.is_running(), f"the program ended: {world.program.last_words()}")
