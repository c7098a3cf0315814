"""A random life of the laptop, compared with a model of what the helper promises."""

import contextlib
import itertools
import os
import pathlib
import random
import shutil
import signal
import time

from laptop import FLAG, HELPER, HELPER_PROCESSES, helper_process, may_write_flag, run
from people import ANNA, BORIS, GREETER
from running import scenario
from waiting import Failed, check, now, wait_for

PATH = pathlib.Path(FLAG)
# How long the laptop may take to agree with the model. The promises are shorter, but the machine is emulated, and
# several events come at once.
LIMIT = 20.0
# The helper starts at once again only if it has served for ten seconds.
SERVED = 12.0
REPORT_EVERY = 100

KINDS = {"write": 48, "switch": 11, "start": 12, "kill": 5, "use": 6, "plug": 4, "unplug": 3, "mouse": 4, "remove": 2,
         "replace": 2, "link": 3, "unlink": 4, "link_elsewhere": 1, "refused": 4, "kill_helper": 1, "restart_helper": 1,
         "stop_helper": 0.3}


class Person:
    """A user account with a word in the flag and at most one process that looks like the application."""

    def __init__(self, session):
        self.session = session
        self.word = "off"
        self.counts = False  # whether the word was written since the application was started
        self.names = []      # further ones of the file, in the flag's folder
        self.application = 0
        home = session.person.home
        self._program = home / "ble-kovra"
        shutil.copy("/bin/sleep", self._program)

    def start(self):
        # The kernel notes the times of starts and of writes to 10 ms.
        time.sleep(0.03)
        line = f"{self._program} 100000 </dev/null >/dev/null 2>&1 & echo $!"
        self.application = int(self.session.run(line))
        name = pathlib.Path(f"/proc/{self.application}/comm")
        wait_for(lambda: name.read_text().strip() == "ble-kovra", "the program to run")
        self.counts = False
        time.sleep(0.03)

    def kill(self):
        with contextlib.suppress(ProcessLookupError):
            os.kill(self.application, signal.SIGKILL)
        self.application = 0

    def forget_file(self):
        self.word, self.names = "off", []


class Life:
    def __init__(self, laptop, chance):
        self._laptop, self._chance = laptop, chance
        laptop.install()
        self._people = {person: Person(laptop.log_in(person)) for person in [ANNA, BORIS]}
        self._greeter = laptop.log_in(GREETER)
        self._at_machine = None
        self._pads, self._mouse, self._count = [], None, 0
        self._helper_since = now()
        self._switch_to(ANNA)
        self.plug()
        self.census = {}

    # --- The model

    def is_muted(self):
        person = self._people.get(self._at_machine)
        return bool(person and person.application and person.counts and person.word == "on" and not person.names)

    def agree(self, before, since):
        """Compares the laptop with the model. `before` is whether the pads were to be muted before the event."""
        after = self.is_muted()
        inputs = [device for pad in self._pads for device in pad.inputs]
        wait_for(lambda: all(device.inhibited == after for device in inputs),
                 f"the pads to be {'muted' if after else 'alive'}", LIMIT)
        if not before and not after:
            early = [device.number for device in inputs if self._laptop.inhibitions.find(device, True, since)]
            check(not early, f"{early} were muted by nobody's word")
        if before and not after:
            self._count_as("unmuted")
        if after and not before:
            self._count_as("muted")

    def is_eventful(self, events):
        """Returns whether the pads were muted and unmuted as often as so many events should have done it."""
        return all(self.census.get(what, 0) >= events // 60 for what in ["muted", "unmuted"])

    def _count_as(self, what):
        self.census[what] = self.census.get(what, 0) + 1

    # --- The events

    def step(self):
        kind = self._chance.choices(list(KINDS), list(KINDS.values()))[0]
        before, since = self.is_muted(), now()
        described = getattr(self, kind)() or ""
        if kind in ["kill_helper", "restart_helper", "stop_helper"]:
            before = True
        try:
            self.agree(before, since)
        except Failed as failure:
            raise Failed(f"after {kind} {described}: {failure}; {self._facts()}") from None
        return f"{kind} {described}".strip()

    def _facts(self):
        people = [f"{person.name} {each.word!r} counts {each.counts} application {each.application} names {each.names}"
                  for person, each in self._people.items()]
        flag = PATH.read_text() if PATH.is_file() else "no file"
        return f"at the machine: {self._at_machine and self._at_machine.name}; {'; '.join(people)}; the flag: {flag!r}"

    def write(self):
        """The person at the machine writes the flag, as a rule while the application runs."""
        person = self._people.get(self._at_machine)
        if not person:
            return ""
        if not person.application and self._chance.random() < 0.8:
            person.start()
        word = self._chance.choices(["on", "off", "on ", ""], [6, 4, 0.5, 0.5])[0]
        wait_for(lambda: may_write_flag(person.session), "the person to be allowed to write", LIMIT)
        check(person.session.succeeds(f"printf '{word}' >'{FLAG}'"), "the person at the machine cannot write the flag")
        person.word, person.counts = word, bool(person.application)
        self._count_as(f"wrote {word!r}")
        return repr(word)

    def refused(self):
        """Somebody who is not at the machine tries to write the flag."""
        others = [each for person, each in self._people.items() if person != self._at_machine]
        other = self._chance.choice(others)
        # The hand-over may take a moment.
        wait_for(lambda: not may_write_flag(other.session), "the flag to be somebody else's", LIMIT)
        check(not other.session.succeeds(f"(printf on >'{FLAG}') 2>/dev/null"), "somebody else has written the flag")
        return other.session.person.name

    def switch(self):
        self._switch_to(self._chance.choice([ANNA, ANNA, BORIS, GREETER]))
        return self._at_machine.name if self._at_machine else "the login screen"

    def _switch_to(self, person):
        session = self._greeter if person == GREETER else self._people[person].session
        session.activate()
        if self._at_machine not in [None, person]:
            self._count_as("switched")
        self._at_machine = None if person == GREETER else person
        if self._at_machine:
            wait_for(lambda: may_write_flag(session), "the flag to be handed over", LIMIT)
        else:
            self._wait_for_nobody()

    def _wait_for_nobody(self):
        wait_for(lambda: not any(may_write_flag(each.session) for each in self._people.values()),
                 "the flag to be nobody's", LIMIT)

    def start(self):
        person = self._people[self._chance.choice([ANNA, BORIS])]
        if person.application:
            return ""
        person.start()
        return person.session.person.name

    def kill(self):
        person = self._people[self._chance.choice([ANNA, BORIS])]
        if person.application:
            person.kill()
        return person.session.person.name

    def use(self):
        """Moves a finger over each pad: the kernel's nodes deliver events, or none."""
        for pad in self._pads:
            expect = self._laptop.expect_dead if self.is_muted() else self._laptop.expect_alive
            expect(pad)
        self._count_as("used")

    def plug(self):
        if len(self._pads) < 2:
            twin = self._chance.random() < 0.5
            self._count += 1
            self._pads.append(self._laptop.plug_pad(f"PNP0C50:00 06CB:C{self._count:03d}", twin=twin))

    def unplug(self):
        if len(self._pads) > 1:
            self._pads.pop(self._chance.randrange(2)).unplug()

    def mouse(self):
        """A mouse that nobody has chosen: only a reason for the helper to look."""
        if self._mouse:
            self._mouse.unplug()
        self._mouse = None if self._mouse else self._laptop.plug_mouse()

    def remove(self):
        PATH.unlink(missing_ok=True)
        self._lose_flag()

    def replace(self):
        other = PATH.with_name("other")
        other.unlink(missing_ok=True)
        if self._chance.random() < 0.5:
            other.symlink_to("/run/on")
            pathlib.Path("/run/on").write_text("on")
        else:
            other.write_text("on")
        other.rename(PATH)
        self._lose_flag()

    def _lose_flag(self):
        """The helper replaces the flag of the person at the machine by a new one that says "off"."""
        person = self._people.get(self._at_machine)
        if person:
            person.forget_file()
            wait_for(lambda: PATH.is_file() and may_write_flag(person.session), "a new flag", LIMIT)
        else:
            wait_for(lambda: PATH.is_file() and not PATH.is_symlink(), "a new flag", LIMIT)

    def link(self):
        person = self._people.get(self._at_machine)
        if person:
            self._count += 1
            name = PATH.with_name(f"second.{self._count}")
            os.link(PATH, name)
            person.names.append(name)

    def unlink(self):
        for person in self._people.values():
            for name in person.names:
                name.unlink(missing_ok=True)
            person.names = []

    def link_elsewhere(self):
        self._count += 1
        os.link(PATH, PATH.parents[1] / f"elsewhere.{self._count}")

    def kill_helper(self):
        if self._helper_is_young():
            return "not yet"
        os.kill(helper_process(), signal.SIGKILL)
        self._await_helper()
        return ""

    def stop_helper(self):
        """While a pad is muted, the watchdog ends a helper that hangs."""
        if self._helper_is_young() or not self.is_muted():
            return "not yet"
        process, since = helper_process(), now()
        os.kill(process, signal.SIGSTOP)
        for device in [device for pad in self._pads for device in pad.inputs]:
            self._laptop.inhibitions.wait(device, False, since, 30.0)
        wait_for(lambda: helper_process() not in [0, process], "another helper", 30.0)
        self._await_helper()
        return ""

    def restart_helper(self):
        run("systemctl", "restart", HELPER)
        self._await_helper()

    def _helper_is_young(self):
        return now() < self._helper_since + SERVED

    def _await_helper(self):
        wait_for(lambda: run("systemctl", "show", "-P", "ActiveState", HELPER).strip() == "active" and
                 HELPER_PROCESSES.exists(), "the helper to start", 30.0)
        self._helper_since = now()
        person = self._people.get(self._at_machine)
        if person:
            wait_for(lambda: may_write_flag(person.session), "the flag to be handed over", LIMIT)
        self._count_as("helpers ended")

    def end(self):
        self.unlink()
        for person in self._people.values():
            if person.application:
                person.kill()
            person.session.run(f"rm -f {person.session.person.home}/ble-kovra; echo done")
        for left in PATH.parents[1].glob("elsewhere.*"):
            left.unlink()
        self._switch_to(ANNA)


@scenario("In a random life of people, applications, flags, pads and helpers, the pads are muted only by the word of the "
          "person at the machine.")
def random_life(laptop):
    events = laptop.life["events"]
    seed = laptop.life["seed"] or random.SystemRandom().randrange(1 << 32)
    print(f"random_life: seed {seed}", flush=True)
    begun = now()
    life = Life(laptop, random.Random(seed))
    last = []
    for number in itertools.count():
        # By chance, hardly anybody may be at the machine. Such a life goes on, so that it shows something.
        if number >= events and (life.is_eventful(events) or number >= 10 * events):
            break
        try:
            last = [*last[-11:], life.step()]
        except Failed as failure:
            raise Failed(f"seed {seed}, event {number}: {failure}; before it: {', '.join(last)}") from None
        if (number + 1) % REPORT_EVERY == 0:
            laptop.host.report("progress", text=f"seed {seed}, {number + 1} events, {now() - begun:.0f} s, {life.census}")
    check(life.is_eventful(events), f"seed {seed}: hardly ever muted or unmuted in {number} events: {life.census}")
    life.end()
    return f"seed {seed}, {number} events, 0 differences, {now() - begun:.0f} s, {life.census}"
