"""Scenarios with several user accounts: only the one whose session is active can mute the pad."""

from laptop import AT_ONCE, FLAG, flag, may_write_flag
from people import ANNA, BORIS, GREETER
from running import scenario
from sessions import Session
from waiting import check, now, stay_until, wait_for


def switch_there_and_back(laptop, other, pad):
    """Expects that Anna's muted pad is unmuted while the other session is active, and muted again afterwards."""
    since = now()
    other.activate()
    measured = laptop.expect_back_at_once(since, pad)
    laptop.log_in(ANNA).activate()
    laptop.expect_dead(pad)
    return measured


@scenario("When another person's session becomes active the pad is unmuted; when Anna is back it is muted again.")
def switch(laptop):
    one = laptop.plug_pad(twin=True)
    boris = laptop.log_in(BORIS)
    laptop.log_in(ANNA).activate()
    laptop.mute(one)
    return switch_there_and_back(laptop, boris, one)


@scenario("On the login screen the pad is alive.")
def login_screen(laptop):
    one = laptop.plug_pad()
    laptop.mute(one)
    return switch_there_and_back(laptop, laptop.log_in(GREETER), one)


@scenario("When the person who muted the pad logs out, the pad is unmuted.")
def logout(laptop):
    one = laptop.plug_pad()
    laptop.mute(one)
    anna = laptop.log_in(ANNA)
    since = now()
    anna.log_out()
    # Closing a session takes time, so the limit counts from the change of the session's state.
    wait_for(lambda: anna.state() not in ["online", "active"], "the session to close")
    return laptop.expect_back_at_once(since, one, cause=now())


@scenario("Anna's mouse is unplugged while Boris is at the machine: after her return the pad is alive within 1 s.")
def unplugged_meanwhile(laptop):
    one = laptop.plug_pad()
    boris = laptop.log_in(BORIS)
    laptop.log_in(ANNA).activate()
    application, mouse = laptop.mute(one)
    boris.activate()
    laptop.expect_alive(one)
    mouse.unplug()
    application.wait_refused("off")
    anna = laptop.log_in(ANNA)
    since = now()
    anna.activate()
    # Wait until the flag is Anna's file. Until then it is Boris's file, which contains "off" as well.
    wait_for(lambda: may_write_flag(anna), "the flag to be Anna's again")
    wait_for(lambda: flag() == "off", "Anna's flag to be off")
    took = now() - since
    check(took <= AT_ONCE, f"her flag was off only after {took:.2f} s")
    # Anna's file contains "on" at first, which may mute the pad for a moment.
    stay_until(since + AT_ONCE)
    check(not any(one.inhibited), f"{AT_ONCE} s after her return the pad is dead")
    laptop.expect_alive_until(now() + AT_ONCE, one)
    return f"off after {took:.2f} s"


@scenario("Anna's mouse is plugged while Boris is at the machine: after her return the pad is dead.")
def plugged_meanwhile(laptop):
    one = laptop.plug_pad()
    boris = laptop.log_in(BORIS)
    laptop.log_in(ANNA).activate()
    application = laptop.start_and_wait_for_write()
    boris.activate()
    wait_for(lambda: may_write_flag(boris), "the flag to be Boris's")
    laptop.plug_mouse()
    application.wait_refused("on")
    laptop.expect_alive_until(now() + AT_ONCE, one)
    laptop.log_in(ANNA).activate()
    laptop.expect_dead(one)


@scenario("Boris cannot mute Anna's pad in the background, remotely, or through a file that he has kept open.")
def others(laptop):
    one = laptop.plug_pad()
    application = laptop.start_and_wait_for_write()
    boris, remote = laptop.log_in(BORIS), Session(BORIS, "elsewhere.example")
    boris.activate()
    wait_for(lambda: may_write_flag(boris), "the flag to be Boris's")
    check(boris.succeeds(f"exec 9<>'{FLAG}'"), "Boris cannot open his own flag at the machine")
    anna = laptop.log_in(ANNA)
    anna.activate()
    wait_for(lambda: may_write_flag(anna), "the flag to be Anna's again")
    for session in [boris, remote]:
        check(not session.succeeds(f"(printf on >'{FLAG}') 2>/dev/null"), "Boris has written to Anna's flag")
        theirs = laptop.start(session, mode="always")
        theirs.wait_refused("on")
        laptop.expect_alive_until(now() + AT_ONCE, one)
        theirs.expect_running()
        # Boris may run only one instance, so it must end before the next one is started.
        theirs.kill()
    check(boris.succeeds("printf on >&9"), "Boris cannot write to the file that he has kept open")
    laptop.expect_alive_until(now() + AT_ONCE, one)
    application.expect_running()
    check(flag() == "off", f"Anna's flag is {flag()!r}")
    remote.log_out()


@scenario("Anna herself cannot mute the pad remotely while the login screen is active.")
def same_person_remotely(laptop):
    one = laptop.plug_pad()
    laptop.install()
    laptop.log_in(GREETER).activate()
    remote = Session(ANNA, "elsewhere.example")
    wait_for(lambda: not may_write_flag(remote), "the flag to be Anna's no longer")
    application = laptop.start(remote, mode="always")
    application.wait_refused("on")
    laptop.expect_alive_until(now() + AT_ONCE, one)
    application.expect_running()
    remote.log_out()


@scenario("Anna can mute the pad remotely only while she is at the machine as well.")
def at_the_machine_and_remotely(laptop):
    one = laptop.plug_pad()
    laptop.install()
    remote = Session(ANNA, "elsewhere.example")
    laptop.start(remote, mode="always")
    laptop.expect_dead(one)
    measured = switch_there_and_back(laptop, laptop.log_in(GREETER), one)
    remote.log_out()
    return measured
