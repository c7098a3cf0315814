"""Scenarios in which another user account gives the helper or systemd as much work as it can."""

import contextlib
import os
import pathlib
import signal
import subprocess
import sys

import storms
from application import is_running
from hanging import is_active
from inotify import IN_MOVED_FROM, IN_MOVED_TO, Counter
from laptop import FLAG, GRACE, HELPER, run
from people import ANNA, BORIS
from running import scenario
from sessions import Session
from waiting import check, now, stay_until, wait_for

FLOODER = pathlib.Path(__file__).resolve().with_name("flooder.py")
PROCESSES = 2000
WRITERS = 100
# The limit in seconds for muting and unmuting while a flood keeps the processors busy.
LATE = 10.0
# How often the helper hands the flag over at most: this often in a row, and then this often a second. How often the
# pad is muted has no such limit, since the flag may still be Anna's each time her console is shown.
HAND_OVERS_IN_A_ROW, HAND_OVERS_PER_SECOND = 10, 2


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
        back = laptop.inhibitions.wait(one.inputs[0], False, since, LATE) - since
        laptop.expect_alive(one)
    laptop.log_in(ANNA).activate()
    laptop.expect_dead(one)
    elsewhere.log_out()
    return f"{count} times, {used}; back after {back:.2f} s"


@scenario("A process that Boris has left on his console switches consoles for 5 s: the helper hands the flag over a "
          "few times, and afterwards the pad is right.")
def consoles_flipped(laptop):
    one = laptop.plug_pad()
    laptop.log_in(BORIS)
    laptop.log_in(ANNA).activate()
    _, mouse = laptop.mute(one)
    laptop.settle()
    before, since = storms.Effort(), now()
    folder, name = os.path.split(FLAG)
    renames = Counter(folder, IN_MOVED_TO, between=IN_MOVED_FROM, name=name.encode())
    command = [sys.executable, "-B", str(FLOODER), "flip", str(BORIS.uid), str(storms.SECONDS)]
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, timeout=300)
    check(done.returncode == 0, done.stderr)
    hand_overs, took, after = renames.take(), now() - since, storms.Effort()
    mutes = laptop.inhibitions.count(one.inputs[0], True, since)
    share = (after.seconds - before.seconds) / took
    most = HAND_OVERS_IN_A_ROW + HAND_OVERS_PER_SECOND * took
    check(2 <= hand_overs <= most, f"{hand_overs} hand-overs in {took:.1f} s")
    laptop.log_in(ANNA).activate()
    laptop.expect_dead(one)
    mouse.unplug()
    back = laptop.expect_back_after_grace(mouse, one)
    return (f"{done.stdout.strip()} switches, {hand_overs} hand-overs, {share:.1%} of a processor, muted {mutes} times; "
            f"{back}")


@scenario("Boris keeps the queue of the service manager's socket full: the pad is muted, and unmuted again after the "
          "unplug and when the application is killed.")
def notifications(laptop):
    one = laptop.plug_pad()
    application = laptop.start_and_wait_for_write()
    laptop.settle()
    elsewhere = Session(BORIS, "elsewhere.example")
    with flood(elsewhere, "notify", WRITERS) as output:
        wait_for(output, "the writers")
        stay_until(now() + 2)
        mouse = laptop.plug_mouse()
        muted = laptop.inhibitions.wait(one.inputs[0], True, mouse.added)
        mouse.unplug()
        back = laptop.inhibitions.wait(one.inputs[0], False, mouse.removed, GRACE + LATE)
        again = laptop.plug_mouse()
        laptop.inhibitions.wait(one.inputs[0], True, again.added)
        stay_until(now() + 1)
        since = now()
        os.kill(application.pid, signal.SIGKILL)
        killed = laptop.inhibitions.wait(one.inputs[0], False, since, LATE)
        laptop.expect_alive(one)
    # Once systemd receives notifications again, it may first end the helper, since it has missed its signs of life.
    stay_until(now() + 3)
    wait_for(is_active, "the helper to be active")
    restarts = run("systemctl", "show", "-P", "NRestarts", HELPER).strip()
    laptop.start()
    laptop.expect_dead(one)
    elsewhere.log_out()
    return (f"dead after {muted - mouse.added:.2f} s, back {back - mouse.removed:.2f} s after the unplug and "
            f"{killed - since:.2f} s after the kill; {restarts} restarts of the helper")
