"""Scenarios of the main job, whole: a mouse is plugged, and nothing comes of the touchpad any more."""

import pathlib
import time

import uhid
from laptop import AT_ONCE, GRACE
from running import scenario
from waiting import check, now

DRIVER = pathlib.Path("/sys/bus/hid/drivers/hid-multitouch")


@scenario("Mouse plugged: not an event reaches any reader of the pad. Unplugged: 2.0 s later they flow again.")
def pad(laptop):
    one = laptop.plug_pad()
    laptop.start(selected=["QEMU QEMU USB Mouse#1575:1"])
    laptop.expect_alive(one)
    mouse = laptop.plug_usb_mouse()
    dead = laptop.inhibitions.wait(one.inputs[0], True)
    late = dead - laptop.announced.wait("add", mouse.node)
    check(late <= AT_ONCE, f"dead only {late:.2f} s after udevd told of the mouse")
    laptop.expect_dead(one)
    mouse.unplug()
    return f"dead after {dead - mouse.added:.2f} s, {laptop.expect_back_after_grace(mouse, one)}"


@scenario("The mouse that a touchpad pretends to be as well is muted with it, and given back with it.")
def twin(laptop):
    one = laptop.plug_pad(twin=True)
    _, mouse = laptop.mute(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)


@scenario("Two touchpads: both are muted, and both are given back.")
def two_pads(laptop):
    pads = [laptop.plug_pad(), laptop.plug_pad("SYNA8004:00 06CB:CD8C", product=0xcd8c)]
    _, mouse = laptop.mute(*pads)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, *pads)


@scenario("Touchpads that are plugged in or come by Bluetooth stay alive, and so does every mouse.")
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


@scenario("A touchpad that goes and comes again while it is muted is muted again, under its new number.")
def comes_again(laptop):
    first = laptop.plug_pad(twin=True)
    _, mouse = laptop.mute(first)
    first.unplug()
    again = laptop.plug_pad(twin=True)
    laptop.expect_dead(again)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, again)


@scenario("So is one whose driver is taken away and bound anew.")
def bound_anew(laptop):
    one = laptop.plug_pad()
    _, mouse = laptop.mute(one)
    (DRIVER / "unbind").write_text(one.node)
    (DRIVER / "bind").write_text(one.node)
    one.look_again()
    laptop.expect_dead(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)


@scenario("The clock is set, as it is when the machine wakes: the helper looks at everything again.")
def clock_set(laptop):
    one = laptop.plug_pad()
    _, mouse = laptop.mute(one)
    one.inputs[0].inhibit(False)
    laptop.expect_alive(one)
    time.clock_settime(time.CLOCK_REALTIME, time.time() + 0.5)
    laptop.expect_dead(one)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)


@scenario("A touchpad that something else had inhibited stays so, through muting and giving back.")
def somebody_elses(laptop):
    theirs, ours = laptop.plug_pad(), laptop.plug_pad("SYNA8004:00 06CB:CD8C", product=0xcd8c)
    theirs.inputs[0].inhibit(True)
    _, mouse = laptop.mute(ours)
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, ours)
    laptop.expect_dead(theirs)
    theirs.inputs[0].inhibit(False)
    laptop.expect_alive_until(now() + GRACE, theirs)
