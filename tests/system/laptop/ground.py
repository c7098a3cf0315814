"""What the other scenarios stand on: that the laptop is one."""

import os
import subprocess

import uhid
from people import ANNA, BORIS, GREETER
from running import scenario
from sessions import active
from waiting import check, wait_for


@scenario("systemd is the first process, and the login manager tells on the bus of the one seat.")
def systemd(laptop):
    first = os.readlink("/proc/1/exe")
    check(first == "/usr/lib/systemd/systemd", f"the first process is {first}")
    answer = subprocess.run(["busctl", "call", "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                             "ListSeats"], capture_output=True, text=True, check=True).stdout
    check("seat0" in answer, f"the seats are {answer}")


@scenario("People log in on consoles of their own and come to the front in turn; who logs out leaves nobody there.")
def consoles(laptop):
    anna, boris, greeter = (laptop.log_in(person) for person in [ANNA, BORIS, GREETER])
    for session in [boris, greeter, anna, boris]:
        session.come_to_the_front()
    boris.log_out()
    wait_for(lambda: active() is None, "nobody to be there")
    for session in [greeter, anna]:
        session.come_to_the_front()
    greeter.log_out()


@scenario("A stroke on a touchpad comes out of its nodes, of its twin too, until the kernel is told to inhibit them.")
def touchpad(laptop):
    for bus, twin in [(uhid.BUS_I2C, False), (uhid.BUS_I2C, True), (uhid.BUS_BLUETOOTH, False)]:
        pad = laptop.plug_pad(bus=bus, twin=twin)
        laptop.expect_alive(pad)
        for device in pad.inputs:
            device.inhibit(True)
            laptop.inhibitions.wait(device, True)
        laptop.expect_dead(pad)
        for device in pad.inputs:
            device.inhibit(False)
        laptop.expect_alive(pad)
        pad.unplug()
