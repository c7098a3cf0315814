"""Scenarios of several programs that want to be the one: foreign ones with its name, and further instances."""

import contextlib

from plugging import MADE_UP, play_main_job
from running import scenario
from squatter import Squatter
from waiting import check

NAME = "org.ble_kovra.BLEKovra"
NAME_IS_TAKEN = f"ble-kovra: имя {NAME} на сессионной шине занято другой программой, работа продолжается без него"


@scenario("If another program owns the program's name on the bus, it says so in one line, runs and mutes.")
def squatted_name(world):
    with contextlib.closing(Squatter(world.session_bus(), NAME)):
        running = world.start(selected=[MADE_UP])
        measured = play_main_job(world, world.plug("Kovra Mouse"))
        check(world.journal.messages == [NAME_IS_TAKEN], f"the log contains {world.journal.messages}")
        check(running.is_running(), f"the program ended: {running.last_words()}")
    return measured
