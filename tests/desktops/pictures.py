#!/usr/bin/python3
"""Takes the picture of the desktops for docs/pictures: the settings and the menu on GNOME Shell and on Plasma."""

import argparse
import pathlib
import signal
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path += [str(ROOT / "tests" / folder) for folder in ("hosts", "system", "system/guest")]

import built_packages
import desktops
import roots
from sheets import GAP, beside, save, sheet
from waiting import wait_for
from world import World

SHOWN = {"gnome-48": "GNOME 48", "plasma-6.3": "Plasma 6.3"}
# In pixels, around the window and around the menu with its icon.
MARGIN = 12


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--built", action="store_true", help="take the packages that were built last")
    parser.add_argument("--into", type=pathlib.Path, default=ROOT / "docs/pictures", help="the folder for the picture")
    arguments = parser.parse_args()
    if not arguments.built:
        built_packages.build()
    save(sheet([list(looks(desktop)) for desktop in desktops.DESKTOPS if desktop.name in SHOWN]),
         arguments.into.resolve() / "desktops.png")


def looks(desktop):
    """Yields a title and a picture of the desktop with light windows, and then with dark ones."""
    layers = roots.Root(desktop.release, desktop.layers(built_packages.paths()), print).prepare()
    with tempfile.TemporaryDirectory(prefix="kovra-pictures-") as folder:
        world = World(desktop, layers, pathlib.Path(folder))
        try:
            world.open()
            world.prepare()
            world.start(muted=True)
            for scheme in ("light", "dark"):
                world.shell.set_dark(scheme == "dark")
                yield f"{SHOWN[desktop.name]}, {scheme}", picture(world)
        finally:
            world.close()


def picture(world):
    """Returns the settings window beside the open menu."""
    world.program.perform("settings")
    wait_for(world.window, "the settings", 30)
    # GNOME Shell places the window after it has announced it.
    screen = world.shell.still_picture(lambda screen: world.shell.paper(screen, world.window()), "the settings")
    settings = cut(screen, [world.window().box])
    world.close_settings()
    menu = world.open_menu()
    world.rest()
    screen = world.shell.still_picture()
    opened = cut(screen, [entry.box for entry in menu] + [wait_for(world.shell.icon, "the icon", 20)])
    world.close_menu()
    return beside([settings, opened], GAP)


def cut(screen, boxes):
    """Returns what the screen shows of these boxes, with a margin."""
    lefts, tops, rights, bottoms = zip(*boxes)
    return screen.convert("RGB").crop((max(min(lefts) - MARGIN, 0), max(min(tops) - MARGIN, 0),
                                       min(max(rights) + MARGIN, screen.width),
                                       min(max(bottoms) + MARGIN, screen.height)))


if __name__ == "__main__":
    # SIGTERM raises KeyboardInterrupt, so that the containers end.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    main()
