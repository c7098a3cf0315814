"""Scenarios of people who cause events as fast as they can: the helper hardly works for it, and is right afterwards."""

import os
import pathlib
import re

from laptop import FLAG, HELPER, flag, may_write_flag, run
from people import ANNA, BORIS
from running import scenario
from sessions import Session
from waiting import check, now, stay_until, wait_for

SECONDS = 5
# How often the helper may wake up in a second of a storm: twenty times to look, once more after each pause, and a few
# times more. The processor time of an emulated machine on a busy host says little, so it is only reported.
MOST_WAKE_UPS = 45
# How late the helper may be when the storm is over. At most 50 ms of the delay are the helper's pause; the rest is for
# the emulated machine.
LATE = 0.5
SHARED = pathlib.Path("/shared")
# Repeats a line of Python for some seconds, and runs a last one. Prints how often the first one ran, and the time at
# the end.
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


class Effort:
    """The processor time and the wake-ups of the helper so far."""

    def __init__(self):
        folder = pathlib.Path("/proc", run("systemctl", "show", "-P", "MainPID", HELPER).strip())
        fields = (folder / "stat").read_text().rpartition(")")[2].split()
        self.seconds = (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
        switches = re.search(r"^voluntary_ctxt_switches:\s+(\d+)", (folder / "status").read_text(), re.M)
        self.wake_ups = int(switches[1])


def expect_little_work(before, what):
    after = Effort()
    wake_ups = (after.wake_ups - before.wake_ups) / SECONDS
    check(wake_ups < MOST_WAKE_UPS, f"{what}: the helper woke up {wake_ups:.1f} times a second")
    return f"{wake_ups:.1f} wake-ups a second, {(after.seconds - before.seconds) / SECONDS:.1%} of a processor"


@scenario("Somebody elsewhere touches a neighbor of the flag's path for 5 s: the helper hardly wakes up.")
def neighbor_touched(laptop):
    one = laptop.plug_pad()
    _, mouse = laptop.mute(one)
    # In this machine /tmp is a file system of its own, so that its changes cause no event of "/". This folder is on the
    # same file system as "/".
    SHARED.mkdir()
    SHARED.chmod(0o1777)
    laptop.settle()
    elsewhere = Session(BORIS, "elsewhere.example")
    before = Effort()
    count, _ = storm(elsewhere, f"os.utime('{SHARED}')")
    used = expect_little_work(before, f"{count} events")
    elsewhere.log_out()
    SHARED.rmdir()
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)
    return f"{count} events, {used}"


def flag_storm(laptop, *pads):
    """Anna writes "on" and "off" in turn, and at last "on"."""
    anna = laptop.log_in(ANNA)
    wait_for(lambda: may_write_flag(anna), "the flag to be Anna's")
    laptop.settle()
    before = Effort()
    count, end = storm(anna, write_flag("(b'on', b'off')[count % 2]"), write_flag("b'on'"))
    used = expect_little_work(before, f"{count} words")
    check(flag() == "on", f"the flag is {flag()!r}")
    return count, end, used


@scenario("Anna writes her flag for 5 s: the helper looks about twenty times a second, and the pad is right "
          "soon after the last word.")
def flag_written(laptop):
    one = laptop.plug_pad()
    laptop.start_and_wait_for_write()
    count, end, used = flag_storm(laptop)
    stay_until(now() + 1)
    laptop.expect_dead(one)
    late = laptop.inhibitions.last(one.inputs[0]) - end
    check(late <= LATE, f"the pad was right only {late * 1000:.0f} ms after the last word")
    return f"{count} words, {used}, right {max(0, late) * 1000:.0f} ms after the last word"


@scenario("Anna writes her flag for 5 s without the application: the helper looks about twenty times a second.")
def flag_written_without_application(laptop):
    one = laptop.plug_pad()
    laptop.install()
    count, _, used = flag_storm(laptop)
    laptop.expect_alive(one)
    laptop.start(mode="always")
    laptop.expect_dead(one)
    return f"{count} words, {used}"
