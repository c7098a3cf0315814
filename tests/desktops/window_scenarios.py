"""Scenarios of the windows: who gets the keyboard, the title bar, what a screen reader reads, sizes of texts."""

import spoken_windows
from scenarios import SIMULATED, scenario
from texts import LOCALES, TEXTS
from waiting import Failed, check, wait_for
from world import ASKED, BINARY, TITLES, NotPossible

TYPED = "the quick brown fox jumps over the lazy dog"


@scenario("Without its service, an alert says so at the start; its button \"Later\" closes it.")
def alert(world):
    with world.without_helper():
        world.choose(blockMode="always", isEnabled=False, **ASKED)
        world.shell.launch("ble-kovra")
        world.find_item()
        wait_for(world.alert, "the alert", 30)
        wait_for(lambda: world.alert().has_keyboard, "the alert in front", 20)
        world.keep_picture("alert")
        world.shell.press("Escape")
        wait_for(lambda: not world.alert(), "the alert to close", 20)


@scenario("Whoever types keeps the keyboard: neither the alert of a start nor settings without a token take a key.")
def typing(world):
    if not world.shell.focus_levels:
        raise NotPossible(world.shell.focus_remark)
    with world.without_helper():
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
    world.remark(world.shell.focus_remark)


@scenario("The title bar names the window, minimizes it and closes it; a second start brings it back.")
def title_bar(world):
    world.start()
    world.program.perform("settings")
    wait_for(world.window, "the settings", 30)
    window = world.bring_to_front()
    world.keep_picture("title-bar")
    close, minimize = world.shell.title_buttons(window)
    if minimize:
        world.shell.click(*minimize)
        wait_for(lambda: not world.window().is_shown, "the window to be minimized", 20)
        world.shell.launch("ble-kovra")
        world.expect_window_in_front()
    else:
        world.remark("the desktop's title bars have no button that minimizes")
    world.shell.click(*close)
    wait_for(lambda: not world.window(), "the window to close", 20)


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
