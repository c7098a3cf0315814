"""Scenarios of adverse conditions, such as a flood of events or a udevd that hangs. One scenario measures what the idle
program uses."""

import signal
import subprocess

import hidpp
import uhid
from flag import FOLDER
from plugging import MADE_UP, play_main_job
from running import scenario
from waiting import check, now, stay_until, wait_for
from world import GRACE, LATEST_OFF

FOREIGN_EVENT = "/sys/devices/virtual/mem/null/uevent"
POLLING = "ble-kovra: udev недоступен, подключение и отключение устройств HID проверяется опросом раз в секунду"
# A network namespace that belongs to a user namespace other than the initial one.
CONTAINER = ["unshare", "--user", "--map-current-user", "--net"]


def churn(count, name, keep_last=False):
    """Creates and destroys `count` virtual devices. With keep_last, the last device stays and is returned."""
    batch = 40
    kept = None
    for start in range(0, count, batch):
        made = [uhid.UHID(name, 0x1234, 0x5678, descriptor=uhid.VENDOR_PAGE, uniq=f"crowd-{start + i}")
                for i in range(min(batch, count - start))]
        for device in made:
            check(device.wait_started(), "the kernel did not start a virtual device")
        if keep_last and start + batch >= count:
            kept = made.pop()
        for device in made:
            device.destroy()
    return kept


@scenario("After 150 devices were added and removed and one remains: on. After 150 more and none remains: off.")
def flood_of_events(world):
    world.start(selected=[MADE_UP])
    last = churn(150, "Kovra Mouse", keep_last=True)
    world.settle()
    # A wrong "off" would be written when a grace period ends. So wait that long before the check.
    world.flag.wait_write("on")
    stay_until(now() + LATEST_OFF)
    check(world.flag.last() == "on", f"one device remains, but the writes were: {world.flag.contents()}")
    churn(150, "Kovra Mouse")
    since = now()
    last.destroy()
    world.settle()
    world.flag.wait_write("off", since)
    world.expect_quiet_until(now() + LATEST_OFF)
    check(world.flag.last() == "off", f"no device remains, but the writes were: {world.flag.contents()}")
    return play_main_job(world, world.plug("Kovra Mouse"))


@scenario("Stopped during 600 events of other devices and a plug: on after SIGCONT. The same with an unplug: off.")
def stopped_meanwhile(world):
    running = world.start(selected=[MADE_UP])
    running.stop()
    # 150 devices cause 600 events, since each device causes four: add, bind, unbind and remove.
    churn(75, "Foreign Device")
    mouse = world.plug("Kovra Mouse")
    churn(75, "Foreign Device")
    world.settle()
    running.send(signal.SIGCONT)
    world.flag.wait_write("on")
    running.stop()
    churn(75, "Foreign Device")
    mouse.unplug()
    churn(75, "Foreign Device")
    world.settle()
    since = now()
    running.send(signal.SIGCONT)
    write = world.flag.wait_write("off", since)
    world.expect_writes("off", "on", "off")
    delay = write.time - mouse.removed
    check(delay >= GRACE, f'"off" came {delay:.2f} s after the removal')
    return f"off {write.time - since:.2f} s after SIGCONT"


@scenario("Without the flag's folder each attempt logs one line; the first attempt after its creation writes the flag.")
def missing_folder(world):
    world.flag.remove_folder()
    running = world.start(wait=False, selected=[MADE_UP])

    def expect_lines(*words):
        wait_for(lambda: len(world.journal.messages) >= len(words), f"{len(words)} lines in the log")
        world.settle()
        stay_until(now() + 0.3)
        starts = [f"ble-kovra: не удалось записать флаг ({word}): " for word in words]
        lines = world.journal.messages
        check(len(lines) == len(starts) and all(line.startswith(start) for line, start in zip(lines, starts)),
              f"the log contains: {lines}")

    expect_lines("off")
    world.plug("Kovra Mouse")
    expect_lines("off", "on")
    world.plug("Foreign Device", descriptor=uhid.VENDOR_PAGE)
    expect_lines("off", "on", "on")
    check("ble-kovra: не удалось записать флаг (off): " in running.last_words(), "standard error lacks the lines")
    world.flag.create_folder()
    world.plug("Foreign Device", descriptor=uhid.VENDOR_PAGE)
    world.flag.wait_write("on")
    world.settle()
    world.expect_writes("on")
    expect_lines("off", "on", "on")
    check(FOLDER.is_dir(), "the folder was removed")


def send_foreign_event():
    with open(FOREIGN_EVENT, "w", encoding="ascii") as uevent:
        uevent.write("change")


def off_after_unplugging(world, mouse):
    mouse.unplug()
    off = world.flag.wait_write("off", mouse.removed, limit=8).time - mouse.removed
    check(off >= GRACE, f'"off" came {off:.3f} s after the removal')
    return off


def plug_and_unplug_without_udevd(world):
    mouse = world.plug("Kovra Mouse")
    on = world.flag.wait_write("on", mouse.added, limit=6).time - mouse.added
    off = off_after_unplugging(world, mouse)
    return f"on after {on:.2f} s, off after {off:.2f} s"


@scenario("Without udevd the program finds the mouse by the kernel's events and sleeps; once udevd runs, by udevd's.")
def no_udevd(world):
    world.stop_udevd()
    running = world.start(selected=[MADE_UP])
    seen = plug_and_unplug_without_udevd(world)
    world.expect_writes("off", "on", "off")
    check(POLLING not in world.journal.messages, "the program polls")
    stay_until(now() + 1.0)
    before, _ = running.cost()
    stay_until(now() + 5.0)
    check(running.cost()[0] == before, f"{running.cost()[0] - before} wake-ups in 5 s")
    world.start_udevd()
    plug_and_unplug_without_udevd(world)
    world.settle()
    # The kernel's events would wake the program for a device of any kind.
    before, _ = running.cost()
    send_foreign_event()
    world.settle()
    check(running.cost()[0] == before, "the program still receives the kernel's events")
    return seen


@scenario("In a container that neither udevd's nor the kernel's events reach, the program finds the mouse by polling.")
def no_events(world):
    world.stop_udevd()
    world.start(selected=[MADE_UP], within=CONTAINER)
    wait_for(lambda: POLLING in world.journal.messages, "the line in the log")
    return plug_and_unplug_without_udevd(world)


@scenario("While udevd hangs the trackpad is unmuted within 2.5 s after the chosen mouse was unplugged.")
def hanging_udevd(world):
    world.start(selected=[MADE_UP])
    mouse = world.plug("Kovra Mouse")
    world.expect_on(mouse)
    world.settle()
    world.hang_udevd()
    try:
        mouse.unplug()
        off = world.flag.wait_write("off", mouse.removed, limit=20).time - mouse.removed
    finally:
        world.resume_udevd()
    check(GRACE <= off <= LATEST_OFF, f'"off" came {off:.3f} s after the removal')
    world.settle()
    # udevd has announced the removal only now. The program must not write again.
    world.expect_quiet_until(now() + LATEST_OFF)
    world.expect_writes("off", "on", "off")
    world.expect_on(world.plug("Kovra Mouse"))
    return f"off after {off:.2f} s"


@scenario("When a driver renames a device, the old name counts as unplugged and the new name as plugged.")
def renamed_by_its_driver(world):
    old, new = "Plain Mouse", "Logitech Renamed Mouse"
    key = f"#{hidpp.VENDOR}:{hidpp.PRODUCT}"
    running = world.start(selected=[old + key])
    mouse = world.plug_with(lambda uniq: hidpp.RenamedMouse(old, "Renamed Mouse", uniq))
    world.expect_on(mouse)
    since = now()
    subprocess.run(["/bin/busybox", "insmod", world.modules / "hid-logitech-hidpp.ko"], check=True)
    try:
        unbound = world.events.wait("unbind", HID_NAME=old)
        bound = world.events.wait("bind", HID_NAME=new)
        off = world.flag.wait_write("off", since).time
        check(off - unbound.time >= GRACE, f'"off" came {off - unbound.time:.3f} s after the old driver was unbound')
        check(off - bound.time <= LATEST_OFF + 0.5, f'"off" came {off - bound.time:.3f} s after the new name')
        running.kill()
        world.start(selected=[new + key])
        world.flag.wait_write("on", off)
        mouse.unplug()
        world.expect_off_after_grace(mouse)
    finally:
        mouse.unplug()
        subprocess.run(["/bin/busybox", "rmmod", "hid_logitech_hidpp"], check=True)
    return f"off {off - bound.time:.2f} s after the new name"


@scenario("Idle for 20 s, with ten events of other devices per second: no wake-up and no CPU time.")
def idle(world):
    running = world.start(selected=[MADE_UP])
    world.settle()
    costs = [running.cost()]

    def at_rest():
        stay_until(now() + 2.5)  # the memory of the start is returned 2 s after it
        costs.append(running.cost())
        return costs[-1] == costs[-2]
    wait_for(at_rest, "the program to come to rest after its start")
    before, events, end = running.cost(), 0, now() + 20
    while now() < end:
        send_foreign_event()
        events += 1
        stay_until(end - 20 + events / 10)
    world.settle()
    switches, time = (after - start for after, start in zip(running.cost(), before))
    check(events >= 150, f"only {events} events could be created in this time")
    check(switches == 0, f"{switches} wake-ups")
    check(time == 0, f"{time / 1e6:.3f} ms of CPU")
    return f"{events} events of other devices, 0 wake-ups, 0 ms"
