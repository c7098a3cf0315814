"""Scenarios in which a chosen mouse is plugged in and unplugged."""

import uhid
from running import scenario
from waiting import now
from world import LATEST_OFF

USB_MOUSE = "QEMU QEMU USB Mouse#1575:1"
MADE_UP = "Kovra Mouse#4660:22136"


def play_main_job(world, device):
    """Expects "on" for the plugged device, unplugs it and expects "off". Returns both delays as text."""
    on = world.expect_on(device)
    device.unplug()
    off = world.expect_off_after_grace(device)
    return f"on after {on:.2f} s, off after {off:.2f} s"


@scenario("A chosen USB mouse: on at the plug, still on after the unplug, off 2.0 s after the kernel's removal.")
def usb_mouse(world):
    world.start(selected=[USB_MOUSE])
    measured = play_main_job(world, world.plug_usb_mouse())
    world.expect_writes("off", "on", "off")
    return measured


@scenario("A mouse that is not chosen changes nothing, nor does a chosen one while the switch is off.")
def not_chosen(world):
    world.start(selected=[MADE_UP], enabled=False)
    world.plug("Kovra Mouse")
    world.plug("Other Mouse")
    world.settle()
    world.expect_quiet_until(now() + 0.5)
    world.expect_writes("off")


@scenario("A drop-out of 1 s causes no write.")
def short_drop_out(world):
    world.start(selected=[MADE_UP])
    mouse = world.plug("Kovra Mouse")
    world.expect_on(mouse)
    removed = mouse.unplug()
    world.expect_quiet_until(removed + 1.0)
    again = world.plug("Kovra Mouse")
    world.expect_quiet_until(removed + LATEST_OFF + 1.0)
    # The next removal must start a grace period of its own.
    again.unplug()
    world.expect_off_after_grace(again)
    world.expect_writes("off", "on", "off")


def count_as_one(world, descriptor):
    """Plugs in a mouse, then a device with the same name and numbers. Expects "off" only after both are removed."""
    world.start(selected=[MADE_UP])
    first, second = world.plug("Kovra Mouse"), world.plug("Kovra Mouse", descriptor=descriptor)
    world.expect_on(first)
    world.expect_quiet_until(first.unplug() + LATEST_OFF)
    second.unplug()
    off = world.expect_off_after_grace(second)
    world.expect_writes("off", "on", "off")
    return f"off after {off:.2f} s"


@scenario("Two identical mice count as one: only the removal of the second matters.")
def identical_mice(world):
    return count_as_one(world, uhid.MOUSE)


@scenario("A device with two interfaces, a mouse and a vendor-defined one, is connected until both are removed.")
def two_interfaces(world):
    return count_as_one(world, uhid.VENDOR_PAGE)


@scenario("A mouse on the Bluetooth bus works like one on USB.")
def bluetooth_mouse(world):
    world.start(selected=[MADE_UP])
    return play_main_job(world, world.plug("Kovra Mouse", bus=uhid.BUS_BLUETOOTH))


@scenario("A device on the I2C bus with a non-ASCII name works like one on USB.")
def i2c_device(world):
    world.start(selected=["Мышь № 1#4660:22136"])
    return play_main_job(world, world.plug("Мышь № 1", bus=uhid.BUS_I2C))


@scenario("A nameless device has the translated name for unknown devices: English.")
def nameless_in_english(world):
    world.start(selected=["Unknown device#4660:22136"])
    return play_main_job(world, world.plug(""))


@scenario("A nameless device has the translated name for unknown devices: Russian.")
def nameless_in_russian(world):
    world.start(selected=["Неизвестное устройство#4660:22136"], language="ru_RU.UTF-8")
    return play_main_job(world, world.plug(""))


@scenario("In a name that is not valid UTF-8, the invalid bytes become replacement characters.")
def invalid_utf8_name(world):
    world.start(selected=["Kovra \ufffd Mouse#4660:22136"])
    return play_main_job(world, world.plug(b"Kovra \xff Mouse"))


@scenario("A chosen mouse that is connected before the start is found: first off, then on.")
def present_before_start(world):
    mouse = world.plug_usb_mouse()
    world.settle()
    world.start(selected=[USB_MOUSE])
    world.flag.wait_write("on")
    world.expect_writes("off", "on")
    mouse.unplug()
    off = world.expect_off_after_grace(mouse)
    return f"off after {off:.2f} s"


@scenario("In mode \"always\" the flag is on without any device, and stays on after an unplug.")
def always(world):
    world.start(mode="always")
    world.expect_writes("on")
    mouse = world.plug("Kovra Mouse")
    world.settle()
    world.expect_quiet_until(mouse.unplug() + LATEST_OFF)
