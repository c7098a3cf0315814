"""Scenarios of several people: whoever is at the machine decides, and nobody else."""

from laptop import AT_ONCE, FLAG, flag, may_write_flag
from people import ANNA, BORIS, GREETER
from running import scenario
from sessions import Session
from waiting import check, now, stay_until, wait_for


def come_and_go(laptop, other, pad):
    """Anna has muted the pad: it is given back for as long as the other session is in front of hers."""
    since = now()
    other.come_to_the_front()
    measured = laptop.expect_back_at_once(since, pad)
    laptop.log_in(ANNA).come_to_the_front()
    laptop.expect_dead(pad)
    return measured


@scenario("Somebody else comes to the front: the pad is theirs at once. Back again: dead as before.")
def switch(laptop):
    one = laptop.plug_pad(twin=True)
    boris = laptop.log_in(BORIS)
    laptop.log_in(ANNA).come_to_the_front()
    laptop.mute(one)
    return come_and_go(laptop, boris, one)


@scenario("The login screen comes to the front: the pad is alive there.")
def login_screen(laptop):
    one = laptop.plug_pad()
    laptop.mute(one)
    return come_and_go(laptop, laptop.log_in(GREETER), one)


@scenario("Whoever has muted the pad logs out: it is given back.")
def logout(laptop):
    one = laptop.plug_pad()
    laptop.mute(one)
    anna = laptop.log_in(ANNA)
    since = now()
    anna.log_out()
    # The end of a session takes its time; it counts from when the login manager knows of it.
    wait_for(lambda: anna.state() not in ["online", "active"], "the session to close")
    return laptop.expect_back_at_once(since, one, cause=now())


@scenario("Anna's mouse is unplugged while Boris is at the machine: when she is back, the pad is alive within 1 s, and stays so.")
def unplugged_meanwhile(laptop):
    one = laptop.plug_pad()
    boris = laptop.log_in(BORIS)
    laptop.log_in(ANNA).come_to_the_front()
    application, mouse = laptop.mute(one)
    boris.come_to_the_front()
    laptop.expect_alive(one)
    mouse.unplug()
    application.wait_refused("off")
    anna = laptop.log_in(ANNA)
    since = now()
    anna.come_to_the_front()
    # Until then the file in place is Boris's, which says "off" too.
    wait_for(lambda: may_write_flag(anna), "the flag to be Anna's again")
    wait_for(lambda: flag() == "off", "Anna's flag to say off")
    took = now() - since
    check(took <= AT_ONCE, f"her flag said off only after {took:.2f} s")
    # In between her last word may have counted for a moment.
    stay_until(since + AT_ONCE)
    check(not any(one.inhibited), f"{AT_ONCE} s after she has come the pad is dead")
    laptop.expect_alive_until(now() + AT_ONCE, one)
    return f"off after {took:.2f} s"


@scenario("Her mouse is plugged while Boris is at the machine: when she is back, the pad is dead.")
def plugged_meanwhile(laptop):
    one = laptop.plug_pad()
    boris = laptop.log_in(BORIS)
    laptop.log_in(ANNA).come_to_the_front()
    application = laptop.start_and_hear()
    boris.come_to_the_front()
    wait_for(lambda: may_write_flag(boris), "the flag to be Boris's")
    laptop.plug_mouse()
    application.wait_refused("on")
    laptop.expect_alive_until(now() + AT_ONCE, one)
    laptop.log_in(ANNA).come_to_the_front()
    laptop.expect_dead(one)


@scenario("Boris cannot mute Anna's pad: not from the background, not from elsewhere, not through a file that he has kept open.")
def others(laptop):
    one = laptop.plug_pad()
    application = laptop.start_and_hear()
    boris, elsewhere = laptop.log_in(BORIS), Session(BORIS, "elsewhere.example")
    boris.come_to_the_front()
    wait_for(lambda: may_write_flag(boris), "the flag to be Boris's")
    check(boris.succeeds(f"exec 9<>'{FLAG}'"), "at the machine Boris cannot open his own flag")
    anna = laptop.log_in(ANNA)
    anna.come_to_the_front()
    wait_for(lambda: may_write_flag(anna), "the flag to be Anna's again")
    for session in [boris, elsewhere]:
        check(not session.succeeds(f"(printf on >'{FLAG}') 2>/dev/null"), "Boris has written to Anna's flag")
        theirs = laptop.start(session, mode="always")
        theirs.wait_refused("on")
        laptop.expect_alive_until(now() + AT_ONCE, one)
        theirs.expect_running()
        # It is the only one of its user's, wherever it was started.
        theirs.kill()
    check(boris.succeeds("printf on >&9"), "the file that Boris has kept open does not take his word")
    laptop.expect_alive_until(now() + AT_ONCE, one)
    application.expect_running()
    check(flag() == "off", f"Anna's flag says {flag()!r}")
    elsewhere.log_out()


@scenario("Nor can Anna herself from elsewhere, while the login screen is in front.")
def same_person_from_elsewhere(laptop):
    one = laptop.plug_pad()
    laptop.install()
    laptop.log_in(GREETER).come_to_the_front()
    elsewhere = Session(ANNA, "elsewhere.example")
    wait_for(lambda: not may_write_flag(elsewhere), "the flag to be Anna's no more")
    application = laptop.start(elsewhere, mode="always")
    application.wait_refused("on")
    laptop.expect_alive_until(now() + AT_ONCE, one)
    application.expect_running()
    elsewhere.log_out()


@scenario("From elsewhere she can while she is at the machine as well, and for no longer.")
def at_the_machine_and_elsewhere(laptop):
    one = laptop.plug_pad()
    laptop.install()
    elsewhere = Session(ANNA, "elsewhere.example")
    laptop.start(elsewhere, mode="always")
    laptop.expect_dead(one)
    measured = come_and_go(laptop, laptop.log_in(GREETER), one)
    elsewhere.log_out()
    return measured
