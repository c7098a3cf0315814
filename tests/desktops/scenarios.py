"""The scenarios of the real desktops, in the words of somebody who uses one. Each runs on every desktop."""

import look
from item import PROGRAM
from texts import HINT, MUTE
from waiting import Failed, check, now, repeat, wait_for
from world import ASKED, BINARY, TITLES, NotPossible

SCENARIOS = {}


def scenario(sentence):
    """Registers a function as a scenario. The sentence states what the program promises."""
    def add(function):
        SCENARIOS[function.__name__] = (sentence, function)
        return function
    return add


# The minimum for texts of normal size in the Web Content Accessibility Guidelines. For icons these require 3.
LEAST_CONTRAST = 4.5
# "off" follows the removal of the mouse after 2.0 s. A busy machine may take a moment longer.
GRACE, LATEST = 2.0, 2.6
# How long the pointer may stay busy, in seconds, once the icon or the window is there.
PROMPT = 2
SIMULATED = "the mouse is simulated for the application (umockdev)"


@scenario("Started from the desktop's launcher, the icon appears in the panel, and the pointer stops being busy.")
def launcher(world):
    world.shell.launch("ble-kovra")
    wait_for(world.processes, "the program to start", 30)
    started = now()
    world.find_item()
    shown = now() - started
    limit = 6 if world.shell.stays_busy else PROMPT
    _expect_idle(world, limit)
    ended = now() - started
    if not world.shell.marks_starts():
        world.remark("without a graphics device the desktop's pointer does not become busy")
    elif world.shell.stays_busy:
        world.remark(world.shell.stays_busy)
    check(not world.window(), "the start has opened a window")
    check(not world.key_dialogue.windows(), "the desktop asks for the hot key at once")
    return f"icon after {shown:.1f} s, pointer after {ended:.1f} s"


@scenario("The icon has the color of the panel, and is legible on it.")
def icon(world):
    world.start()
    measured = {}
    for muted in (False, True):
        world.program.perform("on" if muted else "off")
        world.expect_flag(muted)
        world.icon_picture()
        picture = world.shell.still_picture()
        box = world.shell.icon_in(picture)
        measured["muted" if muted else "plain"] = ratio = look.contrast(picture, box, box[0] - 4)
        check(ratio >= LEAST_CONTRAST, f"its contrast is only {ratio:.1f}")
        check(not look.has_outline(picture, box, box[0] - 4), "it has an outline, which the panel would not draw")
    return ", ".join(f"contrast {state} {ratio:.1f}" for state, ratio in measured.items())


@scenario("The mouse is plugged in: the icon gets a slash and says so; 2.0 s after it is unplugged the slash is gone.")
def mouse(world):
    mice = world.start_with_mouse()
    plain = world.icon_picture()
    begun = now()
    node = mice.plug("Mouse")
    world.expect_flag(True)
    on = now() - begun
    world.icon_picture(lambda picture: look.is_slash(look.changed(plain, picture)), "the slash to appear")
    status = TITLES["status.blocked"]
    if world.shell.HAS_TOOL_TIPS:
        world.shell.expect_tool_tip(status)
    else:
        check(status in str(world.item.property("ToolTip")), f"the tool tip is {world.item.property('ToolTip')}")
        world.remark("the desktop shows no tool tips of icons")
    begun = now()
    mice.unplug(node)
    world.expect_flag(False)
    off = now() - begun
    check(GRACE <= off <= LATEST, f"off came after {off:.2f} s")
    world.icon_picture(lambda picture: picture.tobytes() == plain.tobytes(), "the slash to disappear")
    world.remark(SIMULATED)
    return f"on after {on:.2f} s, off after {off:.2f} s"


@scenario("A left and a right click open the menu with its eight entries; choosing each one does what it says.")
def menu(world):
    world.start()
    for button in (1, 3):
        world.open_menu(button)
        # The hint about the hot key changes once the desktop has answered.
        try:
            shown = wait_for(lambda: _menu_with_all_entries(world), f"all entries of the menu, button {button}", 20)
        except Failed as failure:
            raise Failed(f"{failure}: {_titles(world.shell.menu())}, not {_wanted_titles(world)}") from None
        check(not any(entry.is_checked for entry in shown), f"button {button}: the menu shows a tick")
        world.close_menu()
    for is_muted in (True, False):
        world.choose_entry(TITLES["block"])
        world.expect_flag(is_muted)
        _expect_idle(world)
        wait_for(lambda: world.item.checked(MUTE) == is_muted, "the tick to follow")
        _expect_ticks(world, [TITLES["block"]] if is_muted else [])
    world.choose_entry(TITLES["menu.launchAtLogin"], button=3)
    wait_for(world.autostart.exists, "the autostart entry")
    _expect_ticks(world, [TITLES["menu.launchAtLogin"]])
    world.choose_entry(TITLES["menu.launchAtLogin"])
    wait_for(lambda: not world.autostart.exists(), "the autostart entry to be removed")
    world.choose_entry(TITLES["menu.about"])
    wait_for(lambda: world.alert() and world.alert().has_keyboard, "the About box in front", 30)
    world.close_alert()
    world.choose_entry(TITLES["menu.settings"])
    world.expect_window_in_front()
    world.close_window()
    world.choose_entry(TITLES["menu.quit"])
    wait_for(lambda: not world.processes(), "the program to end", 20)
    wait_for(lambda: world.shell.icon() is None, "the icon to leave the panel", 20)
    _expect_idle(world)


@scenario("The settings open in front, with the keyboard: from the menu, at a second start, and on the action.")
def settings(world):
    world.start()
    ways = {"menu": lambda: world.choose_entry(TITLES["menu.settings"]),
            "launcher": lambda: world.shell.launch("ble-kovra"),
            "terminal": lambda: world.run(BINARY),
            "action": lambda: world.program.perform("settings")}
    behind = []
    for way, open_settings in ways.items():
        open_settings()
        window = wait_for(world.window, f"the window, from the {way}", 30)
        check(window.app.removesuffix(".desktop") == PROGRAM, f"the desktop takes the window for {window.app!r}")
        if way in ("menu", "launcher"):
            world.expect_window_in_front()
            _expect_idle(world)
        else:
            if not wait_for(world.window_or_hint, f"the window in front or a hint, from the {way}", 20).has_keyboard:
                behind.append(way)
        world.close_settings()
    if behind:
        world.remark(f"without a token ({', '.join(behind)}) the desktop shows a hint instead")


@scenario("The desktop asks for the hot key once, after the settings were opened; refused, only the menu offers it.")
def hot_key(world):
    if world.desktop.assigns_key:
        raise NotPossible("the desktop assigns the hot key without asking")
    if not world.desktop.asks_for_key:
        raise NotPossible("the desktop asks for no hot keys")
    offer = TITLES["menu.hotkeyHint.choose"]
    world.run(BINARY)
    world.find_item()
    wait_for(lambda: world.item.entries()[HINT].title == offer, "the menu to offer the hot key", 30)
    check(not world.key_dialogue.windows(), "the desktop asks before the settings were opened")
    world.program.perform("settings")
    wait_for(world.window, "the settings", 30)
    world.key_dialogue.refuse()
    world.end_program()
    world.run(BINARY)
    world.find_item()
    wait_for(lambda: world.item.entries()[HINT].title == offer, "the menu to offer the hot key at the next start", 30)
    world.program.perform("settings")
    wait_for(world.window_or_hint, "the settings of the next start", 30)
    check(not world.key_dialogue.windows(), "the desktop asks again at the next start")
    world.close_settings()
    world.choose_entry(offer)
    world.key_dialogue.refuse()
    wait_for(lambda: world.item.entries()[HINT].title == offer, "the menu to offer the hot key after a refusal", 30)


@scenario("Once the user has agreed, Ctrl+Alt+T mutes and unmutes, also after a restart, and the menu shows the keys.")
def portal_key(world):
    if not world.desktop.asks_for_key and not world.desktop.assigns_key:
        raise NotPossible("no portal of this desktop has hot keys")
    world.choose(blockMode="always", isEnabled=False)
    world.run(BINARY)
    world.find_item()
    if world.desktop.assigns_key != "start":
        world.program.perform("settings")
        wait_for(world.window, "the settings", 30)
        if world.desktop.asks_for_key:
            world.key_dialogue.accept()
        else:
            world.key_dialogue.close_page()
        world.close_settings()
    for start in ("the first start", "the next start"):
        wait_for(lambda: world.item.entries()[HINT].title == TITLES["menu.hotkeyHint"],
                 f"the menu to show the hot key at {start}", 30)
        check(not world.key_dialogue.windows(), f"the desktop asks again at {start}")
        _expect_toggles(world)
        world.end_program()
        world.run(BINARY)
        world.find_item()


@scenario("Ctrl+Alt+T mutes and unmutes on X11, also from an editor, which still receives what is typed.")
def grabbed_key(world):
    if world.desktop.is_wayland:
        raise NotPossible("the desktop's portal owns the keys")
    world.start()
    check(world.item.entries()[HINT].title == TITLES["menu.hotkeyHint"], "the menu does not show the hot key")
    _expect_toggles(world)
    with world.editor() as editor:
        _expect_toggles(world)
        editor.type("still here")
        check(editor.finish() == "still here", "the editor has not received what was typed")


@scenario("The panel is restarted: the icon is back within 2 s, and its menu works.")
def panel(world):
    world.start(muted=True)
    before = world.icon_picture()
    seconds = world.shell.restart_panel()
    check(seconds <= 2.0, f"the icon came back after {seconds:.1f} s")
    world.icon_picture(lambda picture: picture.tobytes() == before.tobytes(), "the icon to look as before")
    world.choose_entry(TITLES["block"])
    world.expect_flag(False)
    return f"back after {seconds:.1f} s"


@scenario("The desktop's log has no warning about the program, and the program adds no line that is not promised.")
def journal(world):
    world.start(muted=True)
    # A toolkit may complain only if the window had the keyboard at its end, and only sometimes.
    for _ in range(4):
        world.program.perform("settings")
        wait_for(world.window, "the window", 30)
        world.close_settings()
    world.program.perform("quit")
    wait_for(lambda: not world.processes(), "the program to end", 20)
    wrong = world.session.complaints()
    for part, remark in world.shell.OWN_COMPLAINTS.items():
        if any(part in line for line in wrong):
            world.remark(remark)
            wrong = [line for line in wrong if part not in line]
    check(not wrong, "the journal says: " + "; ".join(wrong))


@scenario("Logging out gives the trackpad back.")
def log_out(world):
    world.start(muted=True)
    world.expect_flag(True)
    begun = now()
    world.shell.log_out()
    world.expect_flag(False)
    off = now() - begun
    wait_for(lambda: not world.processes(), "the program to end", 20)
    return f"off after {off:.1f} s"


# After these, the next scenario gets a new session.
ENDS_SESSION = {"log_out"}


def _menu_with_all_entries(world):
    """Returns the entries of the open menu if they are the eight of the program, with the separator; otherwise None."""
    shown = world.shell.menu()
    return shown if _titles(shown) == _wanted_titles(world) else None


def _titles(menu):
    return [entry.title for entry in menu or [] if entry.title]


def _wanted_titles(world):
    return [TITLES["block"], world.item.entries()[HINT].title, TITLES["menu.settings"], TITLES["menu.launchAtLogin"],
            TITLES["menu.activate"], TITLES["menu.about"], TITLES["menu.quit"]]


def _expect_idle(world, limit=PROMPT):
    """Waits until the pointer stops being busy."""
    seen = [None]

    def is_idle():
        seen[0] = world.shell.is_busy()
        return not seen[0]
    try:
        wait_for(is_idle, "the pointer to stop being busy", limit)
    except Failed as failure:
        raise Failed(f"{failure}: {seen[0]}") from None


def _expect_toggles(world):
    for is_muted in (True, False):
        # A desktop may need a moment from its answer until it watches the key.
        repeat(lambda: world.shell.press("Control", "Alt", "t"), lambda: world.has_flag(is_muted),
               f"the hot key to {'mute' if is_muted else 'unmute'}")


def _expect_ticks(world, titles):
    """Waits until just the entries with these titles have a tick: those that the program exports, and in the menu."""
    wait_for(lambda: [entry.title for entry in world.item.entries() if entry.checked] == titles,
             f"a tick at {titles} in the exported menu")
    world.open_menu()
    wait_for(lambda: [entry.title for entry in world.shell.menu() or [] if entry.is_checked] == titles,
             f"a tick at {titles} in the open menu", 20)
    world.close_menu()
