"""Scenarios of people who cause events as fast as they can: the helper hardly works for it, and is right afterwards."""

import os
import pathlib

from laptop import FLAG, HELPER, flag, may_write_flag, run
from people import ANNA, BORIS
from running import scenario
from sessions import Session
from waiting import check, now, stay_until, wait_for

SECONDS = 10
# The part of a processor that the helper may use during a storm, and how late it may be when the storm is over. At most
# 50 ms of the delay are the helper's pause; the rest is for an emulated machine on a busy host.
SHARE, LATE = 0.02, 0.5
# Repeats a line of Python for that time, and prints how often.
STORM = """import os, time
end, count = time.monotonic() + {seconds}, 0
while time.monotonic() < end:
    {line}
    count += 1
{last}
print(count, time.monotonic())
"""


def storm(session, line, last=""):
    """Returns how often the line was executed in the person's session, and when that was over."""
    script = session.person.home / "storm.py"
    script.write_text(STORM.format(seconds=SECONDS, line=line, last=last), encoding="utf-8")
    count, end = session.run(f"/usr/bin/python3 -B {script}").split()
    check(int(count) > 100 * SECONDS, f"only {count} events in {SECONDS} s are no storm")
    return int(count), float(end)


def write_flag(word):
    """Returns a line of Python that writes this word into the flag, as the application does."""
    return f"file = os.open({FLAG!r}, os.O_WRONLY); os.pwrite(file, {word}, 0); os.ftruncate(file, len({word})); " \
           "os.close(file)"


def processor_time():
    """Returns the seconds of processor time that the helper has used so far."""
    pid = run("systemctl", "show", "-P", "MainPID", HELPER).strip()
    fields = pathlib.Path("/proc", pid, "stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def expect_little_work(before, what):
    share = (processor_time() - before) / SECONDS
    check(share < SHARE, f"{what}: the helper used {share:.1%} of a processor")
    return f"{share:.1%}"


@scenario("Somebody elsewhere touches /tmp for 10 s: the helper uses less than 2 % of a processor.")
def neighbor_touched(laptop):
    one = laptop.plug_pad()
    _, mouse = laptop.mute(one)
    laptop.settle()
    elsewhere = Session(BORIS, "elsewhere.example")
    before = processor_time()
    count, _ = storm(elsewhere, "os.utime('/tmp')")
    used = expect_little_work(before, f"{count} events")
    elsewhere.log_out()
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)
    return f"{count} events, {used} of a processor"


def flag_storm(laptop, *pads):
    """Anna writes "on" and "off" in turn, and at last "on"."""
    anna = laptop.log_in(ANNA)
    wait_for(lambda: may_write_flag(anna), "the flag to be Anna's")
    laptop.settle()
    before = processor_time()
    count, end = storm(anna, write_flag("(b'on', b'off')[count % 2]"), write_flag("b'on'"))
    used = expect_little_work(before, f"{count} words")
    check(flag() == "on", f"the flag is {flag()!r}")
    return count, end, used


@scenario("Anna writes her flag for 10 s: the helper uses less than 2 % of a processor, and the pad is right "
          "soon after the last word.")
def flag_written(laptop):
    one = laptop.plug_pad()
    laptop.start_and_wait_for_write()
    count, end, used = flag_storm(laptop)
    stay_until(now() + 1)
    laptop.expect_dead(one)
    late = laptop.inhibitions.last(one.inputs[0]) - end
    check(late <= LATE, f"the pad was right only {late * 1000:.0f} ms after the last word")
    return f"{count} words, {used} of a processor, right {max(0, late) * 1000:.0f} ms after the last word"


@scenario("Anna writes her flag for 10 s without the application: the helper uses less than 2 % of a processor.")
def flag_written_without_application(laptop):
    one = laptop.plug_pad()
    laptop.install()
    count, _, used = flag_storm(laptop)
    laptop.expect_alive(one)
    laptop.start(mode="always")
    laptop.expect_dead(one)
    return f"{count} words, {used} of a processor"
