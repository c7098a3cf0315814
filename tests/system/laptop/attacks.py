"""A scenario in which another user account forges signals of the login manager."""

import pathlib

from laptop import AT_ONCE, flag
from people import ANNA, BORIS
from running import scenario
from sessions import Session
from waiting import check, now

FORGE = pathlib.Path(__file__).resolve().with_name("forge.py")


@scenario("Signals that another account forges in the name of the login manager neither end Anna's application nor make "
          "it decide.")
def forged_signals(laptop):
    one = laptop.plug_pad()
    application, mouse = laptop.mute(one)
    elsewhere = Session(BORIS, "elsewhere.example")
    before = application.cpu_time()
    check(elsewhere.succeeds(f"/usr/bin/python3 -B {FORGE} {laptop.log_in(ANNA).number} 50"),
          "the signals could not be sent")
    laptop.expect_dead_until(now() + AT_ONCE, one)
    application.expect_running()
    check(flag() == "on", f"the flag is {flag()!r}")
    took = application.cpu_time() - before
    elsewhere.log_out()
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)
    return f"{took:.2f} s of CPU time for 150 signals"
