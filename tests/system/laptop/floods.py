"""Scenarios in which another user account gives the helper or systemd as much work as it can."""

import contextlib
import os
import pathlib
import signal

from application import is_running
from people import BORIS
from running import scenario
from sessions import Session
from waiting import now, wait_for

FLOODER = pathlib.Path(__file__).resolve().with_name("flooder.py")
PROCESSES = 2000


@contextlib.contextmanager
def flood(session, *arguments):
    """Runs flooder.py in the session within the `with` block, and yields its first output."""
    output = session.person.home / "flood"
    output.unlink(missing_ok=True)
    words = " ".join(map(str, arguments))
    pid = int(session.run(f"/usr/bin/python3 -B {FLOODER} {words} </dev/null >{output} 2>&1 & echo $!"))
    try:
        yield wait_for(lambda: output.read_text(encoding="utf-8").strip(), "the flood")
    finally:
        with contextlib.suppress(ProcessLookupError):
            os.kill(pid, signal.SIGTERM)
        wait_for(lambda: not is_running(pid), "the end of the flood")


@scenario("Boris has thousands of processes when Anna's application is killed: the pad is unmuted within 1 s.")
def crowd(laptop):
    one = laptop.plug_pad(twin=True)
    elsewhere = Session(BORIS, "elsewhere.example")
    with flood(elsewhere, "crowd", PROCESSES) as count:
        application, _ = laptop.mute(one)
        since = now()
        application.kill()
        measured = laptop.expect_back_at_once(since, one)
    elsewhere.log_out()
    return f"{count} processes, {measured}"
