"""A scenario of a wireless mouse whose HID node stays when the mouse is switched off. The kernel's battery status shows
whether the mouse is on."""

import subprocess

import hidpp
from running import scenario
from waiting import check, now
from world import GRACE, LATEST_OFF

NAME = "Office Mouse"
KEY = f"Logitech {NAME}#{hidpp.VENDOR}:{hidpp.PRODUCT}"
BATTERY_FEATURE = 0x1000
BATTERY_INDEX = 8
ERROR, OUT_OF_REACH = 0x8F, 0x09
LINK, LINK_IS_LOST = 0x41, 0x40
RECEIVER = 0xFF


class WirelessMouse(hidpp.RenamedMouse):
    """A mouse with a battery that can be switched off. While it is off, it answers every request with an error."""

    def __init__(self, uniq):
        self._is_off = False
        super().__init__(f"Logitech {NAME}", NAME, uniq)

    def switch(self, on):
        self._is_off = not on
        self.input(bytes([hidpp.SHORT, RECEIVER, LINK, 0, 0 if on else LINK_IS_LOST, 0, 0]))

    def _answer(self, question):
        if len(question) < 4 or question[0] not in (hidpp.SHORT, hidpp.LONG):
            return
        device, feature, function = question[1:4]
        if self._is_off:
            self.input(bytes([hidpp.SHORT, device, ERROR, feature, function, OUT_OF_REACH, 0]))
        elif feature == 0 and function >> 4 == 0 and int.from_bytes(question[4:6], "big") == BATTERY_FEATURE:
            self._reply(bytes([hidpp.LONG, device, feature, function, BATTERY_INDEX, 0, 0]))
        elif feature == BATTERY_INDEX and function >> 4 == 0:
            self._reply(bytes([hidpp.LONG, device, feature, function, 50, 40, 0]))  # 50 %, discharging
        elif feature == BATTERY_INDEX and function >> 4 == 1:
            self._reply(bytes([hidpp.LONG, device, feature, function, 4, 0]))  # the number of battery levels: four
        else:
            super()._answer(question)


@scenario("A wireless mouse that is switched off counts as removed although its node stays, also at the start.")
def switched_off(world):
    subprocess.run(["/bin/busybox", "insmod", world.modules / "hid-logitech-hidpp.ko"], check=True)
    mice = []
    try:
        mouse = world.plug_with(lambda uniq: mice.append(WirelessMouse(uniq)) or mice[0])
        running = world.start(selected=[KEY])
        since = world.flag.wait_write("on").time

        def switch(on):
            moment = now()
            mice[0].switch(on)
            return moment

        moment = switch(on=False)
        off = world.flag.wait_write("off", since).time - moment
        check(GRACE <= off <= LATEST_OFF + 1.5, f'"off" came {off:.3f} s after the mouse was switched off')
        moment = switch(on=True)
        on = world.flag.wait_write("on", moment).time - moment

        moment = switch(on=False)
        world.expect_quiet_until(moment + 1.0)
        switch(on=True)
        world.expect_quiet_until(moment + LATEST_OFF + 1.0)

        moment = switch(on=False)
        world.flag.wait_write("off", moment)
        running.kill()
        since = now()
        world.start(selected=[KEY])
        world.flag.wait_write("off", since)
        world.expect_quiet_until(now() + 1.5)
        moment = switch(on=True)
        world.flag.wait_write("on", moment)
        mouse.unplug()
        world.expect_off_after_grace(mouse)
    finally:
        for made in mice:
            made.destroy()
        subprocess.run(["/bin/busybox", "rmmod", "hid_logitech_hidpp"], check=True)
    return f"off after {off:.2f} s, on after {on:.2f} s"
