"""Scenarios of the windows: who gets the keyboard, the title bar, what a screen reader reads, sizes of texts."""

import spoken_windows
from scenarios import SIMULATED, scenario
from texts import LOCALES, TEXTS
from waiting import Failed, check, repeat, wait_for
from world import ASKED, BINARY, TITLES, NotPossible

# How much wider the window becomes at least. It has a reserve for fonts of up to 11 points.
LARGER = 1.2
TYPED = "the quick brown fox jumps over the lazy dog"


@scenario("Without its service, an alert says so at the start; its button \"Later\" closes it.")
def alert(world):
    with world.without_helper():
        world.choose(blockMode="always", isEnabled=False, **ASKED)
        world.shell.launch("ble-kovra")
        world.find_item()
        wait_for(world.alert, "the alert", 30)
        wait_for(lambda: world.alert().has_keyboard, "the alert in front", 20)
        world.expect_centered(world.alert)
        world.keep_picture("alert", world.alert)
        world.close_alert()


@scenario("Whoever types loses no key to a window, or at least answers no alert with one.")
def typing(world):
    with world.without_helper():
        _type_until_alert(world)
        for level in world.shell.focus_levels:
            world.end_program()
            world.choose(blockMode="always", isEnabled=False, **ASKED)
            with world.editor() as editor, world.shell.focus_level(level):
                editor.type(TYPED[:11])
                world.run(BINARY)
                wait_for(world.alert, "the alert", 30)
                editor.type(TYPED[11:22])
                world.find_item()
                editor.type(TYPED[22:33])
                world.program.perform("settings")
                wait_for(world.window, "the settings", 30)
                editor.type(TYPED[33:])
                got = editor.finish()
            check(got == TYPED, f"at the level {level!r} the editor got {got!r}")
    world.remark(f"{world.shell.focus_remark}; an alert that nobody asked for ignores keys for half a second")


def _type_until_alert(world):
    """Types spaces, which would press the alert's button, until the alert has the keyboard. It must stay open."""
    world.choose(blockMode="always", isEnabled=False, **ASKED)
    with world.editor():
        world.run(BINARY)

        def types():
            world.shell.type("   ")
            alert = world.alert()
            return alert and alert.has_keyboard
        wait_for(types, "the alert in front, in spite of the typed keys", 30)
        world.shell.still_picture()
        check(world.alert(), "a key that was typed for the editor has answered the alert")

        world.close_alert()


@scenario("The title bar names the window, minimizes it and closes it; a second start brings it back.")
def title_bar(world):
    world.start()
    world.program.perform("settings")
    wait_for(world.window, "the settings", 30)
    world.expect_centered(world.window)
    world.bring_to_front()
    world.keep_picture("title-bar", world.window)
    close, minimize = world.shell.title_buttons(world.window())
    if minimize:
        repeat(lambda: world.shell.click(*minimize), lambda: not world.window().is_shown, "the window to be minimized")
        world.shell.launch("ble-kovra")
        world.expect_window_in_front()
    else:
        world.remark("the desktop's title bars have no button that minimizes")
    world.shell.click(*close)
    wait_for(lambda: not world.window(), "the window to close", 20)


@scenario("The desktop's texts are made larger by half: the window grows with them, and cuts none.")
def text_size(world):
    world.start()
    world.program.perform("settings")
    before = _width(wait_for(world.window, "the settings", 30))
    grown = lambda: world.window() and _width(world.window()) >= LARGER * before
    try:
        world.shell.set_text_size(1.5)
        try:
            wait_for(grown, "the window to grow", 10)
        except Failed:
            world.remark("a window that is open keeps its size until the program is started again")
            world.end_program()
            world.start()
            world.program.perform("settings")
            wait_for(grown, "a larger window", 30)
        world.keep_picture("text-size", world.window)
        share = _width(world.window()) / before
    finally:
        world.shell.set_text_size(1)
    return f"the window is {share:.2f} times as wide"


def _width(window):
    return window.box[2] - window.box[0]


@scenario("A screen reader reads the settings and the alert, in each of the six languages.")
def screen_reader(world):
    mice = world.mice()
    mice.plug("Mouse")
    with world.screen_reader() as reader, world.without_helper():
        for locale in LOCALES:
            world.end_program()
            world.choose(blockMode="onDevice", isEnabled=True, selectedDeviceIDs=[mice.key("Mouse", 1)], **ASKED)
            world.run(BINARY, LANGUAGE=locale, LC_ALL=f"{locale}.UTF-8", **mice.environment)
            world.find_item()
            world.program.perform("settings")
            text = TEXTS[locale]
            wanted = spoken_windows.settings(text, [("check box", "Mouse", True)], "status.blocked", is_on=True,
                                             advice=False) | spoken_windows.driver(text)
            try:
                wait_for(lambda: reader.windows() == wanted, "the texts", 20)
            except Failed:
                raise Failed(f"in {locale} the windows contain {reader.windows()}\n        and not {wanted}") from None
    world.remark(SIMULATED)
