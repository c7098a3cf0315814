"""Scenarios of the session: its start and its end."""

from scenarios import ENDS_SESSION, scenario
from waiting import check, wait_for
from world import TITLES


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


@scenario("Shutting down gives the trackpad back.")
def shut_down(world):
    world.start(muted=True)
    world.expect_flag(True)
    seen = world.session.shut_down()
    check(seen and seen[-1] == "off", f"at the end the flag said {seen[-1:]}")


ENDS_SESSION |= {"login", "shut_down"}
