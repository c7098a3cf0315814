"""Scenarios of the session: its start and its end."""

import look
from scenarios import ENDS_SESSION, SIMULATED, scenario
from waiting import check, wait_for
from world import TITLES, NotPossible


@scenario("Launch at login: ticked, the program runs once after the next login, with its icon; unticked, it does not.")
def login(world):
    world.start()
    for is_ticked in (True, False):
        world.choose_entry(TITLES["menu.launchAtLogin"])
        wait_for(lambda: world.autostart.exists() == is_ticked, "the autostart entry")
        world.log_in_again()
        if is_ticked:
            world.find_item()
            check(len(world.processes()) == 1, f"the program runs {len(world.processes())} times")
            check(not world.shell.windows(), f"the login has opened {world.shell.windows()}")
    world.shell.still_picture()
    check(not world.processes(), "the program runs although it was unticked")


@scenario("The list of programs that start at login shows the program with its name and its icon.")
def autostart_page(world):
    world.start()
    world.choose_entry(TITLES["menu.launchAtLogin"])
    wait_for(world.autostart.exists, "the autostart entry")
    world.shell.show_autostart_page(world)


@scenario("While the screen is locked, the mouse mutes and unmutes as ever, and afterwards the icon shows the state.")
def lock(world):
    if world.shell.cannot_lock:
        raise NotPossible(world.shell.cannot_lock)
    mice = world.start_with_mouse()
    plain = world.icon_picture()
    world.session.lock(True)
    try:
        node = mice.plug("Mouse")
        world.expect_flag(True)
        mice.unplug(node)
        world.expect_flag(False)
        mice.plug("Mouse", 1)
        world.expect_flag(True)
    finally:
        world.session.lock(False)
    muted = world.icon_picture(lambda picture: picture.tobytes() != plain.tobytes(), "the slash to appear")
    check(look.is_slash(look.changed(plain, muted)), "the change in the icon is not a slash")
    world.expect_flag(True)
    world.remark(SIMULATED)


@scenario("Somebody else logs in at the machine: the trackpad works for them. Afterwards it is muted again.")
def switch_user(world):
    world.start(muted=True)
    before = world.icon_picture()
    with world.session.another_person():
        world.expect_flag(False)
        check(world.processes(), "the program has ended")
    world.expect_flag(True)
    world.icon_picture(lambda picture: picture.tobytes() == before.tobytes(), "the icon to look as before")


@scenario("Shutting down gives the trackpad back.")
def shut_down(world):
    world.start(muted=True)
    world.expect_flag(True)
    seen = world.session.shut_down()
    check(seen and seen[-1] == "off", f"at the end the flag said {seen[-1:]}")


ENDS_SESSION |= {"login", "shut_down"}
