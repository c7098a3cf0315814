"""A long life of application, window process and helper: plugs, switches of people, suspends, openings of the settings.

The machine skips the time in which nothing happens, so a life of days takes an hour. The state of the pad is compared
with a model after each event, and what the processes hold after each tenth of the life.
"""

import collections
import contextlib
import pathlib
import random
import time

import program
from laptop import FLAG, GRACE, helper_process
from people import ANNA, BORIS
from resources import files_in, held_by, zombies
from running import scenario
from screen import ESCAPE, Screen
from sleeping import asleep
from waiting import Failed, check, now, stay_until, wait_for

# Of so many plugs, one is followed by a switch, and so on: 10,000 plugs, 1,000 switches, 500 suspends, 200 openings.
PLUGS_PER = {"switch": 10, "suspend": 20, "open_settings": 50}
# How late the pad may change, in seconds. The other machines check what is promised. In this one, the clock goes on while
# the machine waits for the host's files, for example when an old log is deleted at a later date.
PATIENCE = 10.0
# One unplug in so many is followed by a plug during the grace period.
SHORT_INTERRUPTIONS = 10
TENTHS = 10
REPORT_EVERY = 100
# How much more memory a process may hold at the end than after the first tenth, in KiB. The heap's holes move.
MOST_GROWTH = 64
# The window process goes on for half a minute after its last window.
WINDOW_PROCESS_LEFT = 40.0
FOLDERS = [str(pathlib.Path(FLAG).parent), "/run/ble-kovra-helper", str(ANNA.home / ".config"), "/run/user/2001", "/tmp"]


class LongLife:
    def __init__(self, laptop, chance, screen):
        self._laptop, self._chance, self._screen = laptop, chance, screen
        self._anna, self._boris = laptop.log_in(ANNA), laptop.log_in(BORIS)
        self._anna.activate()
        self._at_machine = ANNA
        self._pad = laptop.plug_pad(twin=True)
        self._application = laptop.start(display=screen.name)
        self._helper = helper_process()
        self._mouse = None
        self._slowest = collections.Counter()
        self.census = collections.Counter()

    # --- The events

    def plug(self):
        """The chosen mouse is plugged in if it is not, and then unplugged, or the other way round."""
        for _ in range(2):
            self._unplug() if self._mouse else self._plug()

    def _plug(self):
        self._mouse = self._laptop.plug_mouse()
        self.census["plug"] += 1
        if self._at_machine == ANNA:
            self._expect_write(True, self._mouse.added, 0, "dead")
        self._agree()

    def _unplug(self):
        mouse, self._mouse = self._mouse, None
        mouse.unplug()
        if self._chance.randrange(SHORT_INTERRUPTIONS) == 0:
            self._interrupt_shortly(mouse)
        elif self._at_machine == ANNA:
            stay_until(mouse.removed + GRACE - 0.1)
            check(all(self._pad.inhibited), "the pad works before the end of the grace period")
            self._expect_write(False, mouse.removed, GRACE, "back")
        else:
            stay_until(mouse.removed + GRACE + 1)  # or else the pad would still be muted for Anna
        self._agree()

    def _interrupt_shortly(self, mouse):
        stay_until(mouse.removed + self._chance.uniform(0, GRACE / 2))
        self._mouse = self._laptop.plug_mouse()
        self.census["plug"] += 1
        self.census["interruption"] += 1
        stay_until(mouse.removed + GRACE + 1)
        early = [device.number for device in self._pad.inputs
                 if self._laptop.inhibitions.find(device, False, mouse.removed)]
        check(self._at_machine != ANNA or not early, f"{early} were unmuted by a short interruption")

    def switch(self):
        self.census["switch"] += 1
        since = now()
        self._at_machine = BORIS if self._at_machine == ANNA else ANNA
        (self._anna if self._at_machine == ANNA else self._boris).activate()
        if self._mouse:
            self._expect_write(self._at_machine == ANNA, since, 0, "switch")
        self._agree()

    def suspend(self):
        """The laptop sleeps. Half of the time, the mouse is plugged in or unplugged meanwhile."""
        self.census["suspend"] += 1
        # Without hours: setting the clock would change whether a word counts, which a real sleep does not.
        with asleep(self._application, seconds=0, hours=0):
            if self._chance.random() < 0.5:
                if self._mouse:
                    self._mouse.unplug()
                self._mouse = None if self._mouse else self._laptop.plug_mouse()
                self.census["changed in sleep"] += 1
        # During the suspend, the kernel shows another console for a moment, so the pad may be unmuted. Without the
        # mouse, it is muted once more until the end of the grace period.
        stay_until(now() + GRACE + 1)
        self._agree()

    def open_settings(self):
        self.census["opening"] += 1
        check(self._anna.succeeds("ble-kovractl settings >/dev/null 2>&1"), "ble-kovractl settings fails")
        wait_for(self._screen.shows_settings, "the settings to open")
        self._screen.wait_keyboard()
        self._screen.press(ESCAPE)
        wait_for(lambda: not self._screen.windows(), "the settings to close")
        self._agree()

    # --- The model

    def _is_muted(self):
        return bool(self._mouse) and self._at_machine == ANNA

    def _agrees(self):
        return self._pad.inhibited == [self._is_muted()] * 2

    def _agree(self):
        try:
            wait_for(self._agrees, "the pad", GRACE + PATIENCE)
        except Failed:
            raise Failed(f"at the machine: {self._at_machine.name}, the mouse is {'there' if self._mouse else 'gone'}, "
                         f"but the pad's devices are muted: {self._pad.inhibited}") from None

    def _expect_write(self, on, since, least, name):
        for device in self._pad.inputs:
            delay = self._laptop.inhibitions.wait(device, on, since, least + PATIENCE) - since
            check(delay >= least, f"{name} after {delay:.3f} s")
            self._note(name, delay)

    def _note(self, name, delay):
        self._slowest[name] = max(self._slowest[name], delay)

    # --- What the processes hold

    def resources(self):
        """Waits until the window process has ended. Returns what application and helper hold, and the files."""
        wait_for(lambda: not program.window_processes(self._application.pid), "the window process to end",
                 WINDOW_PROCESS_LEFT)
        if self._at_machine != ANNA:
            self.switch()
        while self._mouse:
            self._unplug()
        self._application.expect_running()
        check(helper_process() == self._helper, "the helper is another process")
        wait_for(lambda: not zombies(), f"zombies to go: {zombies()}", 10)
        return {"application": held_by(self._application.pid), "helper": held_by(self._helper)}, files_in(*FOLDERS)

    def facts(self):
        """Returns in one line what helps to explain a wrong state."""
        status = self._anna.run("ble-kovractl status --json | tr -d '\\n'; echo")
        folder = pathlib.Path(FLAG).parent
        files = [f"{path.name} {path.read_text()!r} {path.stat().st_mtime:.3f}" for path in folder.iterdir()]
        return (f"now {now():.3f}, {time.time():.3f}; at the machine {self._at_machine.name}, mouse {bool(self._mouse)}, "
                f"pad muted {self._pad.inhibited}; files {files}; {status}")

    def slowest(self):
        return ", ".join(f"{name} {delay:.2f} s" for name, delay in sorted(self._slowest.items()))


def rounds(plugs, chance):
    """Yields the names of the events of a life with about so many plugs."""
    for number in range(plugs):
        yield "plug"
        for name, every in PLUGS_PER.items():
            if chance.randrange(every) == 0:
                yield name


@scenario("In a long life of plugs, switches, sleeps and windows the pad is always as promised, and no process grows.")
def long_life(laptop):
    plugs = laptop.life["events"]
    seed = laptop.life["seed"] or random.SystemRandom().randrange(1 << 32)
    print(f"long_life: seed {seed}", flush=True)
    chance = random.Random(seed)
    rows = []
    with contextlib.closing(Screen()) as screen:
        life = LongLife(laptop, chance, screen)
        life.open_settings()  # so that what is loaded once is loaded before the first tenth ends
        for number, event in enumerate(rounds(plugs, chance)):
            try:
                getattr(life, event)()
                if life.census["plug"] * TENTHS >= plugs * (len(rows) + 1):
                    rows.append(life.resources())
                    _report(laptop, rows[-1][0], life)
            except Failed as failure:
                raise Failed(f"seed {seed}, event {number}, {event}: {failure}; so far {dict(life.census)}; "
                             f"{life.facts()}") from None
            laptop.events.forget()
            laptop.inhibitions.forget()
            if number % REPORT_EVERY == 0:
                laptop.host.report("progress", text=f"{dict(life.census)}, {now():.0f} s of the machine's time")
        rows.append(life.resources())
    _compare(rows[0], rows[-1])
    return f"seed {seed}, {dict(life.census)}, 0 wrong states; the slowest: {life.slowest()}; {_words(rows[-1][0])}"


def _report(laptop, held, life):
    laptop.host.report("progress", text=f"{dict(life.census)}; {_words(held)}; {life.slowest()}")


def _words(held):
    return "; ".join(f"{name}: {each.memory} KiB, {each.descriptors} descriptors, {each.threads} threads, "
                     f"{each.watches} watches" for name, each in held.items())


def _compare(first, last):
    for name, before in first[0].items():
        after = last[0][name]
        check(after.memory <= before.memory + MOST_GROWTH, f"the {name} has grown from {before} to {after}")
        check(after._replace(memory=0) == before._replace(memory=0), f"the {name} held {before}, and holds {after}")
    check(first[1] == last[1], f"new files: {sorted(set(last[1]) - set(first[1]))}")


