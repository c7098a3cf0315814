"""Scenarios in which another user account gives the helper or systemd as much work as it can."""

import contextlib
import os
import pathlib
import signal
import subprocess
import sys

import storms
from application import is_running
from people import ANNA, BORIS
from running import scenario
from sessions import Session
from waiting import check, now, wait_for

FLOODER = pathlib.Path(__file__).resolve().with_name("flooder.py")
PROCESSES = 2000
# The helper hands the flag over at most ten times in a row and then twice a second. Half of the hand-overs are to Anna,
# whose pad may be muted after each.
MOST_MUTES = (10 + 2 * storms.SECONDS) // 2 + 2


@contextlib.contextmanager
def flood(session, *arguments):
    """Runs flooder.py in the session within the `with` block. Yields a function that returns its output so far."""
    output = session.person.home / "flood"
    output.unlink(missing_ok=True)
    words = " ".join(map(str, arguments))
    pid = int(session.run(f"/usr/bin/python3 -B {FLOODER} {words} </dev/null >{output} 2>&1 & echo $!"))
    try:
        yield lambda: output.exists() and output.read_text(encoding="utf-8").strip()
    finally:
        with contextlib.suppress(ProcessLookupError):
            os.kill(pid, signal.SIGTERM)
        wait_for(lambda: not is_running(pid), "the end of the flood")


@scenario("Boris has thousands of processes when Anna's application is killed: the pad is unmuted within 1 s.")
def crowd(laptop):
    one = laptop.plug_pad(twin=True)
    elsewhere = Session(BORIS, "elsewhere.example")
    with flood(elsewhere, "crowd", PROCESSES) as output:
        count = wait_for(output, "the crowd")
        check(count == str(PROCESSES), count)
        application, _ = laptop.mute(one)
        since = now()
        application.kill()
        measured = laptop.expect_back_at_once(since, one)
    elsewhere.log_out()
    return f"{count} processes, {measured}"


@scenario("Boris has the login manager rewrite the file of his session for 5 s: the helper hardly wakes up, and the "
          "pad is unmuted at once if he switches to his console meanwhile.")
def sessions_rewritten(laptop):
    one = laptop.plug_pad()
    boris = laptop.log_in(BORIS)
    laptop.log_in(ANNA).activate()
    laptop.mute(one)
    elsewhere = Session(BORIS, "elsewhere.example")
    laptop.settle()
    before = storms.Effort()
    count = elsewhere.run(f"/usr/bin/python3 -B {FLOODER} rewrite {storms.SECONDS} 2>&1")
    check(count.isdigit() and int(count) > 2 * storms.SECONDS, f"the file was rewritten too seldom: {count}")
    used = storms.expect_little_work(before, f"{count} times")
    laptop.expect_dead(one)
    with flood(elsewhere, "rewrite", storms.SECONDS):
        since = now()
        boris.show_console()
        back = laptop.expect_back_at_once(since, one)
    laptop.log_in(ANNA).activate()
    laptop.expect_dead(one)
    elsewhere.log_out()
    return f"{count} times, {used}; {back}"


@scenario("A process that Boris has left on his console switches consoles for 5 s: the helper hands the flag over a "
          "few times, and afterwards the pad is right.")
def consoles_flipped(laptop):
    one = laptop.plug_pad()
    laptop.log_in(BORIS)
    laptop.log_in(ANNA).activate()
    _, mouse = laptop.mute(one)
    laptop.settle()
    before, since = storms.Effort(), now()
    command = [sys.executable, "-B", str(FLOODER), "flip", str(BORIS.uid), str(storms.SECONDS)]
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, timeout=300)
    check(done.returncode == 0, done.stderr)
    took, after = now() - since, storms.Effort()
    mutes = laptop.inhibitions.count(one.inputs[0], True, since)
    share = (after.seconds - before.seconds) / took
    check(mutes <= MOST_MUTES, f"the pad was muted {mutes} times in {took:.1f} s")
    laptop.log_in(ANNA).activate()
    laptop.expect_dead(one)
    mouse.unplug()
    back = laptop.expect_back_after_grace(mouse, one)
    return f"{done.stdout.strip()} switches, {share:.1%} of a processor, muted {mutes} times; {back}"
