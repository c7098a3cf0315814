"""Scenarios of the icon and its menu: the ways to open it, its languages, colors and sizes."""

import look
from scenarios import ENDS_SESSION, LEAST_CONTRAST, scenario
from texts import LOCALES, MUTE, TEXTS
from waiting import Failed, check, repeat, wait_for
from world import ASKED, BINARY, TITLES, NotPossible

SCALES = (1, 1.5, 2)
# A picture that was enlarged by two, with smooth transitions, has half of the contrast between neighboring pixels.
SHARP = 0.6
# In a window that is enlarged by one and a half, this is two thirds.
SHARP_WINDOW = 0.75


@scenario("A middle click does nothing, and a double click opens no window; afterwards a click opens the menu as ever.")
def clicks(world):
    world.start()
    for button, times in ((2, 1), (1, 2), (3, 2)):
        world.shell.expect_menu()
        world.click_icon(button, times)
        world.shell.still_picture()
        check(not world.window(), f"{times} clicks of button {button} have opened a window")
        check(world.session.flag() == "off", f"{times} clicks of button {button} have muted the trackpad")
        world.shell.press("Escape")
        wait_for(lambda: not world.shell.menu(), "the menu to close", 20)
        world.rest()
    world.choose_entry(TITLES["block"])
    world.expect_flag(True)


@scenario("The keyboard reaches the icon on the panel, opens its menu, and chooses an entry.")
def keyboard(world):
    world.start()
    world.rest()
    world.shell.focus_icon()
    world.shell.expect_menu()
    world.shell.press("Return")
    wait_for(world.shell.menu, "the menu to open", 20)
    world.shell.choose_first_entry()
    world.expect_flag(True)
    wait_for(lambda: world.item.checked(MUTE), "the tick to follow")


@scenario("The menu is in each of the six languages.")
def languages(world):
    for locale in LOCALES:
        world.prepare()
        world.choose(blockMode="always", isEnabled=False, **ASKED)
        world.run(BINARY, LANGUAGE=locale, LANG=f"{locale}.UTF-8", LC_ALL=f"{locale}.UTF-8")
        world.find_item()
        wanted = [TEXTS[locale][key] for key in ("block", "menu.settings", "menu.launchAtLogin", "menu.activate",
                                                 "menu.about", "menu.quit")]
        world.open_menu()
        shown = lambda: [entry.title for entry in world.shell.menu() or []]
        wait_for(lambda: [title for title in shown() if title in wanted] == wanted,
                 f"the menu in {locale}, not {shown()}", 20)
        world.keep_picture(f"menu-{locale}")
        world.close_menu()


@scenario("Dark and light are switched while the program runs: the icon is legible, and the open window follows.")
def schemes(world):
    world.start()
    world.program.perform("settings")
    wait_for(world.window, "the settings", 30)
    measured = []
    try:
        for is_dark in (True, False):
            world.shell.set_dark(is_dark)
            world.rest()
            name = "dark" if is_dark else "light"
            picture = world.shell.still_picture(
                lambda picture: _is_dark(world, picture) == is_dark and _contrast(world, picture) >= LEAST_CONTRAST,
                f"the window to become {name}, with a legible icon", 30)
            measured.append(_contrast(world, picture))
            world.keep_picture(name)
    finally:
        world.shell.set_dark(False)
    return f"contrast dark {measured[0]:.1f}, light {measured[1]:.1f}"


@scenario("At 100, 150 and 200 % the icon is as large as the panel's icons, sharp, and legible.")
def scales(world):
    if not world.shell.CAN_SCALE:
        raise NotPossible("an X server has one scale, which programs read when they start")
    world.start(muted=True)
    measured = []
    try:
        for scale in SCALES:
            world.shell.set_scale(scale)
            wait_for(world.shell.icon, "the icon", 20)
            world.rest()
            sharp = lambda picture: _is_sharp(world, picture)
            picture = world.shell.still_picture(sharp, f"a sharp icon at {scale}", 20)
            world.keep_picture(f"scale-{scale:.0%}")
            step, contrast = look.steepest(picture, world.shell.icon_in(picture)), _contrast(world, picture)
            check(contrast >= LEAST_CONTRAST, f"at {scale} the contrast is only {contrast:.1f}")
            measured.append(f"{scale:.0%}: contrast {contrast:.1f}, edges {step:.2f}")
    finally:
        world.shell.set_scale(1)
    return "; ".join(measured)


@scenario("A second screen comes, with another scale: the window that is moved there is sharp, and so is the icon.")
def second_screen(world):
    if not world.shell.CAN_SCALE:
        raise NotPossible("the desktop runs on an X server with one screen here")
    world.start(muted=True)
    world.program.perform("settings")
    wait_for(world.window, "the settings", 30)
    world.shell.still_picture()
    with world.shell.second_screen(1.5) as left:
        # GNOME 43 may move the window back while it arranges its screens.
        repeat(lambda: world.shell.move_window(left), lambda: world.window().box[0] >= left,
               "the window on the second screen", patience=3)
        world.rest()
        sharp = lambda picture: _is_sharp(world, picture) and _window_is_sharp(world, picture)
        picture = world.shell.still_picture(sharp, "a sharp icon and a sharp window on the second screen", 30)
        world.keep_picture("second-screen")
        edges = look.steepest(picture, world.shell.pixels(picture, world.window().box))
    try:
        wait_for(lambda: world.window().box[0] < left, "the window to come back", 20)
    except Failed:
        # On Wayland a program does not know the places of its windows, and cannot change them.
        check(world.desktop.is_wayland, "the window is still where the second screen was")
        world.remark("the desktop left the window where the second screen was")
    return f"edges {edges:.2f}"


# GNOME Shell 43 may lay out its screen wrongly after one was removed, and then shows no new window.
ENDS_SESSION |= {"second_screen"}


def _window_is_sharp(world, picture):
    left, top, right, bottom = world.shell.pixels(picture, world.window().box)
    # Without the frame, which the desktop draws.
    return look.steepest(picture, (left + 20, top + 80, right - 20, bottom - 20)) >= SHARP_WINDOW


def _contrast(world, picture):
    box = world.shell.icon_in(picture)
    return look.contrast(picture, box, box[0] - 4)


def _is_sharp(world, picture):
    """Returns whether the icon is sharp, or as sharp as what is beside it. KWin 5.27 enlarges the panel at 200 %."""
    left, top, right, bottom = world.shell.icon_in(picture)
    beside = (right, top, right + 2 * (right - left), bottom)
    return look.steepest(picture, (left, top, right, bottom)) >= min(SHARP, 0.9 * look.steepest(picture, beside))


def _is_dark(world, picture):
    """Returns whether the paper of the window is dark; None if the picture does not show it."""
    paper = world.shell.paper(picture, world.window())
    return look.luminance(paper) < 0.3 if paper else None
