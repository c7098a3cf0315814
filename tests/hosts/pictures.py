#!/usr/bin/python3
"""Takes the pictures for docs/pictures: the icon and the menu in real panels."""

import argparse
import contextlib
import pathlib
import shutil
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "tests/system/guest"))

import secluded
from sheets import GAP, LANGUAGES, beside, save, sheet


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("binary", nargs="?", default=ROOT / "build/release/ble-kovra", help="the program to show")
    parser.add_argument("--into", type=pathlib.Path, default=ROOT / "docs/pictures", help="the folder for the pictures")
    arguments = parser.parse_args()
    binary, into = pathlib.Path(arguments.binary).resolve(), arguments.into.resolve()
    into.mkdir(parents=True, exist_ok=True)
    folder = pathlib.Path(tempfile.mkdtemp(prefix="kovra-pictures-"))
    folder.chmod(0o755)
    secluded.seclude()
    secluded.adopt_orphans()
    import panels
    items = [panel for panel in panels.PANELS if panel.takes_items]
    try:
        save(beside(list(first_look(panels.XfcePanel, binary, folder)), 2 * GAP), into / "tray.png")
        save(sheet(icons(items, binary, folder)), into / "icon.png")
        save(sheet(menus(panels, binary, folder)), into / "menu.png")
    finally:
        secluded.end_descendants()
        shutil.rmtree(folder)


def first_look(panel, binary, folder):
    """Yields two pictures of the menu at two pixels per point: unmuted on a light desktop, and muted on a dark one."""
    for dark, muted in ((False, False), (True, True)):
        with running(panel, binary, folder, dark, scale=2) as world:
            world.start(muted=muted)
            world.wait_look()
            yield open_menu(world)


def icons(all_panels, binary, folder):
    """Yields a row of pictures per panel: the icon unmuted and muted, on a light and a dark panel, at two scales."""
    for panel in all_panels:
        row = []
        for scale in (1, 2):
            for dark in (False, True):
                with running(panel, binary, folder, dark, scale) as world:
                    states = []
                    for muted in (False, True):
                        world.prepare()
                        world.start(muted=muted)
                        world.wait_look()
                        states.append(around(world.screen.picture(), world.icon, panel.height * scale))
                    row.append((f"{panel.name}, {'dark' if dark else 'light'}, {scale}x", beside(states, 0)))
        yield row


def menus(panels, binary, folder):
    """Yields rows of three pictures: the menu in six languages on one panel, and then the menu on several panels."""
    with running(panels.XfcePanel, binary, folder) as world:
        translated = []
        for locale, name in LANGUAGES.items():
            world.prepare()
            world.start(muted=True, locale=locale)
            translated.append((name, open_menu(world)))
        yield translated[:3]
        yield translated[3:]
    others = []
    for panel, dark in ((panels.XfcePanel, True), (panels.LxqtPanel, False), (panels.LxqtPanel, True),
                        (panels.MatePanel, True), (panels.Waybar, False), (panels.Trayer, False)):
        with running(panel, binary, folder, dark) as world:
            world.start(muted=True)
            world.wait_look()
            others.append((f"{panel.name}, {'dark' if dark else 'light'}", open_menu(world)))
    yield others[:3]
    yield others[3:]


@contextlib.contextmanager
def running(panel, binary, folder, dark=False, scale=1):
    from world import World
    world = World(panel, binary, folder, dark, scale)
    try:
        world.start_panel()
        yield world
    finally:
        world.end_program()
        world.close()


def open_menu(world):
    menu = world.open_menu()
    left, top, right, bottom = menu.box
    # The picture includes the part of the panel with the icon.
    taken = menu.picture.crop((max(0, min(left, world.icon[0]) - 8), 0,
                               min(world.screen.size[0], max(right, world.icon[2]) + 8), bottom + 8))
    world.dismiss_menu()
    world.wait_menu_closed()
    return taken


def around(picture, box, height):
    """Returns the part of the picture around the middle of the box, `height` pixels high."""
    middle = (box[0] + box[2]) // 2
    half = min(middle, picture.width - middle, height)
    return picture.crop((middle - half, 0, middle + half, height))


main()
