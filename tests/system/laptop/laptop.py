"""What a scenario finds on the laptop: people, pads, mice and, once it is installed, the application and its helper."""

import subprocess

import uhid
from inhibitions import Inhibitions
from people import ANNA, BORIS, GREETER
from ports import Ports
from sessions import Session
from touchpad import Pad, Touchpad
from waiting import check, wait_for

# Which console each person uses.
PLACES = {ANNA: ("tty2", "user"), BORIS: ("tty3", "user"), GREETER: ("tty4", "greeter")}
MOUSE = "Kovra Mouse"
CHOSEN = "Kovra Mouse#4660:22136"


class Laptop(Ports):
    def __init__(self, host):
        super().__init__(host)
        self.inhibitions = Inhibitions()
        self._sessions = {}

    # Before and after each scenario.

    def prepare(self):
        self.events.forget()
        self.log_in(ANNA).come_to_the_front()

    def clean(self):
        self.unplug_all()

    def last_words(self):
        command = ["journalctl", "--no-pager", "-n", "60", "-o", "short-monotonic"]
        return subprocess.run(command, capture_output=True, text=True).stdout

    # People.

    def log_in(self, person):
        """The person's session at the machine; logged in now where there is none."""
        if person not in self._sessions or not self._sessions[person].is_there():
            self._sessions[person] = Session(person, *PLACES[person])
        return self._sessions[person]

    def log_in_from_elsewhere(self, person):
        return Session(person, "elsewhere.example")

    # Touchpads.

    def plug_pad(self, name="PNP0C50:00 06CB:CD8B", vendor=0x06cb, product=0xcd8b, bus=uhid.BUS_I2C, twin=False):
        pads = []

        def make(uniq):
            pads.append(Pad(Touchpad(name, vendor, product, bus, uniq, twin), twin))
            return pads[0]
        device = self.plug_with(make)
        pads[0].unplug = device.unplug
        return pads[0]

    def expect_alive(self, pad):
        """Nothing inhibits it, and whoever strokes it moves the pointer."""
        wait_for(lambda: not any(pad.inhibited), f"the pad to be given back: {pad.inhibited}")
        came = pad.use()
        check(all(came), f"events came of the pad's input devices: {came}")

    def expect_dead(self, pad):
        """All of it is inhibited, and not a byte comes of any node."""
        wait_for(lambda: all(pad.inhibited), f"the pad to be inhibited: {pad.inhibited}")
        came = pad.use()
        check(not any(came), f"events came of the pad's input devices: {came}")
