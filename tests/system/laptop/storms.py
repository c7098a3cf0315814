"""Scenarios in which a user causes events as fast as possible. Neither the helper nor the application must wake up for
each of them."""

import contextlib
import os
import pathlib
import re

from laptop import CHOSEN, FLAG, flag, helper_process, may_write_flag
from people import ANNA, BORIS
from running import scenario
from screen import Screen
from sessions import Session
from waiting import check, now, stay_until, wait_for

SECONDS = 5
# The limit of wake-ups per second. The helper may read the flag 20 times, and wakes up again at the end of the pause
# after each read. The same holds for the application. Five more wake-ups are tolerated. CPU time has no limit, since it
# says little in an emulated machine on a busy host.
MOST_WAKE_UPS = 45
# The limit in seconds from the last write of the flag until the pad is muted. The helper pauses for at most 50 ms; the
# rest is for the emulated machine.
LATE = 0.5
# The limit of what nested event loops add to the stack, in KiB.
MOST_STACK = 128
SHARED = pathlib.Path("/shared")
# A program that executes one line of Python repeatedly for some seconds, and then another line once. It prints the
# number of repetitions and the time at the end.
STORM = """import os, time
end, count = time.monotonic() + {seconds}, 0
while time.monotonic() < end:
    {line}
    count += 1
{last}
print(count, time.monotonic())
"""


def storm(session, line, last=""):
    """Runs STORM in the session. Returns the number of repetitions and the time at the end, in seconds."""
    script = session.person.home / "storm.py"
    script.write_text(STORM.format(seconds=SECONDS, line=line, last=last), encoding="utf-8")
    count, end = session.run(f"/usr/bin/python3 -B {script}").split()
    check(int(count) > 100 * SECONDS, f"only {count} events in {SECONDS} s are no storm")
    return int(count), float(end)


def write_flag(word):
    """Returns a line of Python that writes `word`, a Python expression, into the flag as the application does."""
    return f"file = os.open({FLAG!r}, os.O_WRONLY); os.pwrite(file, {word}, 0); os.ftruncate(file, len({word})); " \
           "os.close(file)"


class Effort:
    """The CPU time in seconds and the voluntary context switches of a process so far, by default of the helper."""

    def __init__(self, pid=None):
        self.pid = pid or helper_process()
        folder = pathlib.Path("/proc", str(self.pid))
        fields = (folder / "stat").read_text().rpartition(")")[2].split()
        self.seconds = (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
        switches = re.search(r"^voluntary_ctxt_switches:\s+(\d+)", (folder / "status").read_text(), re.M)
        self.wake_ups = int(switches[1])


def expect_little_work(before, what):
    after = Effort(before.pid)
    wake_ups = (after.wake_ups - before.wake_ups) / SECONDS
    check(wake_ups < MOST_WAKE_UPS, f"{what}: process {before.pid} woke up {wake_ups:.1f} times a second")
    return f"{wake_ups:.1f} wake-ups a second, {(after.seconds - before.seconds) / SECONDS:.1%} of a processor"


@scenario("Somebody elsewhere touches a neighbor of the flag's path for 5 s: the helper hardly wakes up.")
def neighbor_touched(laptop):
    one = laptop.plug_pad()
    _, mouse = laptop.mute(one)
    # The helper watches "/" with inotify, since the flag's path begins there. It receives an event for each change of
    # /shared. It would receive none for /tmp, which is a mount point.
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
    """Makes Anna's session write "on" and "off" in turn, and "on" at the end."""
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


@scenario("Boris, at the machine, touches his flag for 5 s: Anna's application hardly wakes up, and logs nothing.")
def flag_touched(laptop):
    one = laptop.plug_pad()
    boris = laptop.log_in(BORIS)
    laptop.log_in(ANNA).activate()
    application, mouse = laptop.mute(one)
    boris.activate()
    wait_for(lambda: may_write_flag(boris), "the flag to be Boris's")
    mouse.unplug()
    application.wait_refused("off")
    laptop.settle()
    lines = len(application.output().splitlines())
    helper, program = Effort(), Effort(application.pid)
    count, _ = storm(boris, f"os.utime({FLAG!r})")
    used = [expect_little_work(before, f"{count} touches") for before in [helper, program]]
    lines = len(application.output().splitlines()) - lines
    check(lines == 0, f"{lines} lines in the log of Anna's application")
    anna = laptop.log_in(ANNA)
    anna.activate()
    wait_for(lambda: may_write_flag(anna) and flag() == "off", "Anna's flag to be off")
    laptop.expect_alive(one)
    return f"{count} touches, helper {used[0]}, application {used[1]}"


CLICKS = 300
# The position of "About" in the menu, whose items are numbered from 1.
ABOUT = 6


def stack_size(process):
    """Returns the size of the process's stack in KiB."""
    return int(re.search(r"^VmStk:\s+(\d+)", pathlib.Path(f"/proc/{process}/status").read_text(), re.M)[1])


@scenario("When About is chosen 300 times one alert is on the screen, and the pad is back after the grace period.")
def about_chosen_again_and_again(laptop):
    one = laptop.plug_pad()
    with contextlib.closing(Screen()) as screen:
        application = laptop.start(display=screen.name, selected=CHOSEN)
        mouse = laptop.plug_mouse()
        laptop.expect_dead(one)
        before = stack_size(application.pid)
        item, events = "org.ble_kovra.BLEKovra", f"{ABOUT} clicked i 0 0 " * CLICKS
        menu = f"busctl --address=unix:path=/run/user/$(id -u)/bus call {item} /MenuBar com.canonical.dbusmenu"
        label = laptop.log_in(ANNA).run(f"{menu} GetProperty is {ABOUT} label")
        check("About" in label, f"item {ABOUT} is {label}")
        missing = laptop.log_in(ANNA).run(f"{menu} EventGroup 'a(isvu)' {CLICKS} {events}")
        check(missing == "ai 0", f"the menu answers {missing}")
        # The window process loads the toolkit first, which takes long in an emulated machine on a busy host.
        wait_for(lambda: len(screen.alerts()) == 1, "one alert to be on the screen", 400)
        mouse.unplug()
        measured = laptop.expect_back_after_grace(mouse, one)
        check(len(screen.alerts()) == 1, f"alerts on the screen: {screen.alerts()}")
        grown = stack_size(application.pid) - before
        application.expect_running()
        application.quit()
    check(grown <= MOST_STACK, f"the stack has grown by {grown} KiB")
    return f"{measured}, stack {grown} KiB larger"
