"""Scenarios in which another user account sends messages to Anna's application over the system bus."""

import os
import pathlib
import signal
import subprocess

from laptop import AT_ONCE, flag
from people import ANNA, BORIS
from running import scenario
from sessions import Session
from waiting import check, now, stay_until, wait_for

FORGE = pathlib.Path(__file__).resolve().with_name("forge.py")
LINGER = FORGE.with_name("linger.py")


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


@scenario("While another account has sent Anna's application a descriptor that takes long to close, the application "
          "still reacts to the mouse.")
def lingering_socket(laptop):
    one = laptop.plug_pad()
    application, mouse = laptop.mute(one)
    elsewhere = Session(BORIS, "elsewhere.example")
    # Any account can read the clients' names.
    client = elsewhere.run(f"busctl --system list --no-legend | awk '$2 == {application.pid} {{print $1}}' | grep ^:")
    output = BORIS.home / "linger"
    output.unlink(missing_ok=True)
    attacker = int(elsewhere.run(f"/usr/bin/python3 -B {LINGER} {client} </dev/null >{output} 2>&1 & echo $!"))
    try:
        wait_for(lambda: output.exists() and output.read_text(), "the attacker")
        check(output.read_text().strip() == "sent", f"the attacker prints {output.read_text()!r}")
        stay_until(now() + AT_ONCE)
        mouse.unplug()
        measured = laptop.expect_back_after_grace(mouse, one)
    finally:
        os.kill(attacker, signal.SIGKILL)
    # The bus itself may have waited for the descriptor that it refused to deliver.
    wait_for(bus_answers, "the system bus to answer")
    application.expect_running()
    elsewhere.log_out()
    return measured


def bus_answers():
    command = ["busctl", "--timeout=1", "call", "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
               "GetId"]
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True).returncode == 0
