"""Scenarios that check the virtual laptop itself: systemd, the consoles and the touchpads."""

import os
import subprocess

import uhid
from people import ANNA, BORIS, GREETER
from running import scenario
from sessions import active
from waiting import check, wait_for


@scenario("systemd is the first process, and the login manager reports the one seat on the bus.")
def systemd(laptop):
    first = os.readlink("/proc/1/exe")
    check(first == "/usr/lib/systemd/systemd", f"the first process is {first}")
    manager = ["org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager"]
    call = ["busctl", "call", *manager, "ListSeats"]
    answer = subprocess.run(call, capture_output=True, text=True, check=True).stdout
    check("seat0" in answer, f"the seats are {answer}")


@scenario("People log in on their own consoles and become active in turn; after a logout no session is active.")
def consoles(laptop):
    anna, boris, greeter = (laptop.log_in(person) for person in [ANNA, BORIS, GREETER])
    for session in [boris, greeter, anna, boris]:
        session.activate()
    boris.log_out()
    wait_for(lambda: active() is None, "no session to be active")
    for session in [greeter, anna]:
        session.activate()
    greeter.log_out()


@scenario("A touchpad and its twin deliver events until the kernel inhibits them.")
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
