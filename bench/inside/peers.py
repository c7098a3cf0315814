#!/usr/bin/python3
"""Measures other tray programs in a private session.

Some of them need a battery, BlueZ, UDisks or a notification service to show an icon, so this script simulates these.
"""

import json
import pathlib
import subprocess
import sys

from tray_cost import measure

POWER = pathlib.Path("/sys/class/power_supply")
BATTERY = {"type": "Battery", "present": 1, "status": "Discharging", "energy_full_design": 50000000,
           "energy_full": 45000000, "energy_now": 30000000, "power_now": 9000000, "voltage_now": 11400000,
           "capacity": 66, "scope": "System"}
UDISKS = ["org.freedesktop.UDisks2", "/org/freedesktop/UDisks2", "org.freedesktop.UDisks2"]


def main():
    add_battery()
    simulate("--system", "org.bluez", "--template", "bluez5")
    simulate("--session", "org.freedesktop.Notifications", "--template", "notification_daemon")
    simulate("--system", UDISKS[0], "--is-object-manager", *UDISKS)
    subprocess.run(["gdbus", "call", "--system", "--dest", UDISKS[0], "--object-path", UDISKS[1], "--method",
                    "org.freedesktop.DBus.Mock.AddObject", f"{UDISKS[1]}/Manager", f"{UDISKS[2]}.Manager",
                    "{'Version': <'2.9.4'>}", "[]"], stdout=subprocess.DEVNULL, check=True)
    print(json.dumps(measure(json.loads(sys.argv[1]))))


def add_battery():
    subprocess.run(["mount", "-t", "tmpfs", "none", POWER], check=True)
    battery = POWER / "BAT0"
    battery.mkdir()
    for name, value in BATTERY.items():
        (battery / name).write_text(f"{value}\n")


def simulate(bus, name, *what):
    subprocess.Popen([sys.executable, "-m", "dbusmock", bus, *what], stdin=subprocess.DEVNULL,
                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    subprocess.run(["gdbus", "wait", bus, "--timeout", "20", name], check=True)


if __name__ == "__main__":
    main()
