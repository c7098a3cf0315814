"""Scenarios in which a chosen mouse is plugged in and the touchpads stop delivering events."""

import pathlib
import time

import uhid
from laptop import AT_ONCE, GRACE
from running import scenario
from waiting import check, now

DRIVER = pathlib.Path("/sys/bus/hid/drivers/hid-multitouch")


@scenario("With the mouse plugged no reader receives an event of the pad; 2.0 s after the unplug events flow again.")
def pad(laptop):
    one = laptop.plug_pad()
    laptop.start(selected=["QEMU QEMU USB Mouse#1575:1"])
    laptop.expect_alive(one)
    mouse = laptop.plug_usb_mouse()
    dead = laptop.inhibitions.wait(one.inputs[0], True)
    late = dead - laptop.announced.wait("add", mouse.node)
    check(late <= AT_ONCE, f"dead only {late:.2f} s after udevd reported the mouse")
    laptop.expect_dead(one)
    mouse.unplug()
    return f"dead after {dead - mouse.added:.2f} s, {laptop.expect_back_after_grace(mouse, one)}"


@scenario("The twin of a touchpad, a mouse in the same device, is muted and unmuted together with it.")
def twin(laptop):
    one = laptop.plug_pad(twin=True)
    _, mouse = laptop.mute(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)


@scenario("Two touchpads are both muted and both unmuted.")
def two_pads(laptop):
    pads = [laptop.plug_pad(), laptop.plug_pad("SYNA8004:00 06CB:CD8C", product=0xcd8c)]
    _, mouse = laptop.mute(*pads)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, *pads)


@scenario("External touchpads, on USB or Bluetooth, stay alive, and so does every mouse.")
def external(laptop):
    own = laptop.plug_pad()
    others = [laptop.plug_pad("Logitech Touchpad", 0x046d, 0x1234, uhid.BUS_USB),
              laptop.plug_pad("Kovra Bluetooth Pad", bus=uhid.BUS_BLUETOOTH)]
    _, mouse = laptop.mute(own)
    laptop.expect_alive(*others)
    inhibited = [path.parent.name for path in pathlib.Path("/sys/class/input").glob("input*/inhibited")
                 if path.read_text().strip() == "1"]
    check(inhibited == [own.inputs[0].number], f"inhibited are {inhibited}")
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, own)


@scenario("A touchpad that is removed and added again while it is muted is muted again under its new number.")
def added_again(laptop):
    first = laptop.plug_pad(twin=True)
    _, mouse = laptop.mute(first)
    first.unplug()
    again = laptop.plug_pad(twin=True)
    laptop.expect_dead(again)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, again)


@scenario("A touchpad whose driver is unbound and bound again is muted again.")
def driver_rebound(laptop):
    one = laptop.plug_pad()
    _, mouse = laptop.mute(one)
    (DRIVER / "unbind").write_text(one.node)
    (DRIVER / "bind").write_text(one.node)
    one.look_again()
    laptop.expect_dead(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)


@scenario("When the clock is set forward by a day, as after a hibernation, the helper checks everything again, and the "
          "pad stays muted until 2.0 s after the unplug.")
def clock_set(laptop):
    one = laptop.plug_pad()
    _, mouse = laptop.mute(one)
    one.inputs[0].inhibit(False)
    laptop.expect_alive(one)
    time.clock_settime(time.CLOCK_REALTIME, time.time() + 24 * 3600)
    laptop.expect_dead(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)


@scenario("A touchpad that another program has inhibited stays inhibited throughout.")
def inhibited_by_another_program(laptop):
    theirs, ours = laptop.plug_pad(), laptop.plug_pad("SYNA8004:00 06CB:CD8C", product=0xcd8c)
    theirs.inputs[0].inhibit(True)
    _, mouse = laptop.mute(ours)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, ours)
    laptop.expect_dead(theirs)
    theirs.inputs[0].inhibit(False)
    laptop.expect_alive_until(now() + GRACE, theirs)
