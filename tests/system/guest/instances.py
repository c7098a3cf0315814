"""Scenarios in which another program owns the application's bus name, or the application is started twice."""

import contextlib

from plugging import MADE_UP, play_main_job
from running import scenario
from squatter import Squatter
from waiting import check, now

NAME = "org.ble_kovra.BLEKovra"
NAME_IS_TAKEN = f"ble-kovra: имя {NAME} на сессионной шине занято другой программой, работа продолжается без него"

OUT_OF_REACH = "ble-kovra: программа уже запущена этим пользователем, но на сессионной шине не отвечает"
NO_BUS = "unix:path=/nonexistent/bus"


@scenario("If another program owns the program's name on the bus, it says so in one line, runs and mutes.")
def squatted_name(world):
    with contextlib.closing(Squatter(world.session_bus(), NAME)):
        running = world.start(selected=[MADE_UP])
        measured = play_main_job(world, world.plug("Kovra Mouse"))
        check(world.journal.messages == [NAME_IS_TAKEN], f"the log contains {world.journal.messages}")
        check(running.is_running(), f"the program ended: {running.last_words()}")
    return measured


@scenario("A further instance without the first one's bus says so in one line and ends; after SIGKILL a start runs again.")
def further_instance_without_the_bus(world):
    first = world.start(selected=[MADE_UP])
    world.expect_on(world.plug("Kovra Mouse"))
    # If the second instance made a decision, it would write "off", since its switch is off.
    second = world.start(wait=False, bus=NO_BUS, enabled=False)
    status = second.wait_exit()
    check(status == 0, f"it ended with {status}: {second.last_words()}")
    check(world.journal.messages == [OUT_OF_REACH], f"the log contains {world.journal.messages}")
    world.expect_writes("off", "on")
    check(first.is_running(), "the first instance ended too")
    first.kill()
    since = now()
    third = world.start(wait=False, bus=NO_BUS, enabled=False)
    world.flag.wait_write("off", since)
    check(third.is_running(), f"the third instance ended: {third.last_words()}")
