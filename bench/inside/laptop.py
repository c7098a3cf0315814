#!/usr/bin/env python3
"""Simulates a laptop with a touchpad, its twin and a logged-in user, and measures the helper on it. Runs in a private
mount namespace.

Prints the measurements as one JSON object. umockdev's library simulates sysfs and udev's messages. The `inhibited`
attribute is a file in memory, so only the helper is measured, not a driver.
"""

import json
import os
import pathlib
import shutil
import socket
import subprocess
import sys
import time

import processes
import session

PERSON = 61001
FLAG = pathlib.Path("/Library/Application Support/ble-kovra/state")
TIMEOUT_SECONDS = 20
SETTLE_SECONDS = 3
# The helper wakes up once when it has run for 10 s: it has not crashed early.
START_SECONDS = 11
# If events of the flag are frequent, the helper reads them at most 20 times a second. One write of the flag may need
# two reads. With these pauses the limit delays no read.
PAUSE_SECONDS = 0.1
STORM_SECONDS = 5
NEIGHBOR = FLAG.parents[1] / "neighbor"
# What another user can do as often as they like. Each line is executed repeatedly, with a growing `count`.
STORMS = {
    "the flag is written": f"""f = os.open({str(FLAG)!r}, os.O_WRONLY); os.pwrite(f, (b'on', b'off')[count % 2], 0); """
                           """os.ftruncate(f, 2 + count % 2); os.close(f)""",
    "a neighbor of its folder is touched": f"os.utime({str(NEIGHBOR)!r})",
}


def main():
    world = json.loads(sys.argv[1])
    folder = pathlib.Path(world["folder"])
    mount("/Library")
    FLAG.parent.mkdir(parents=True)
    FLAG.write_text("off")
    application = log_in(folder)
    pads = Pads(folder)
    try:
        result = {"changes": changes(world, pads), "memory": memory(world), "idle": idle(world, pads),
                  "storms": storms(world, pads)}
    finally:
        application.kill()
        application.wait()
    print(json.dumps(result))


def mount(point):
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=755", "none", point], check=True)


def log_in(folder):
    for name, text in [("seats/seat0", f"IS_SEAT0=1\nACTIVE=c1\nACTIVE_UID={PERSON}\nSESSIONS=c1\n"),
                       ("sessions/c1", f"UID={PERSON}\nACTIVE=1\nSTATE=active\nREMOTE=0\nCLASS=user\nSEAT=seat0\n"),
                       ("users/none", ""), ("machines/none", "")]:
        path = pathlib.Path("/run/systemd") / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
    folder.chmod(0o755)
    application = folder / "ble-kovra"
    shutil.copy(shutil.which("sleep"), application)
    return subprocess.Popen([application, "infinity"], user=PERSON, group=PERSON, extra_groups=[])


class Helper:
    """The running helper. The constructor returns when the helper has reported that it is ready."""

    def __init__(self, world, environment=os.environ):
        path = f"{world['folder']}/notify"
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as notify:
            notify.bind(path)
            notify.settimeout(TIMEOUT_SECONDS)
            self._process = subprocess.Popen([world["daemon"]], env={**environment, "NOTIFY_SOCKET": path})
            # If the flag says "on", the helper arms its watchdog before it is ready.
            while notify.recv(100) != b"READY=1":
                pass
        os.unlink(path)

    @property
    def pid(self):
        return self._process.pid

    def end(self):
        self._process.terminate()
        if self._process.wait() != 0:
            sys.exit("laptop: the helper failed")


def until(condition):
    deadline = time.monotonic() + TIMEOUT_SECONDS
    while not condition():
        if time.monotonic() > deadline:
            sys.exit("laptop: an expected event did not occur in time")
        time.sleep(0.01)


class Pads:
    """A touchpad and its twin, simulated with files."""

    def __init__(self, folder):
        self._root = folder / "umockdev"
        hid = self._root / "sys/devices/platform/host/0018:06CB:CD8B.0001"
        self._device(hid, "bus/hid", "HID_NAME=x\n")
        self.attributes = [self._input(hid, 4, "Mouse", "ID_INPUT_MOUSE"),
                           self._input(hid, 5, "Touchpad", "ID_INPUT_TOUCHPAD")]

    @property
    def environment(self):
        return os.environ | {"LD_PRELOAD": "libumockdev-preload.so.0", "UMOCKDEV_DIR": str(self._root)}

    def are(self, value):
        return all(attribute.read_text()[0] == value for attribute in self.attributes)

    def _device(self, path, subsystem, uevent):
        path.mkdir(parents=True)
        (path / "uevent").write_text(uevent)
        (self._root / "sys" / subsystem).mkdir(parents=True, exist_ok=True)
        (path / "subsystem").symlink_to(self._root / "sys" / subsystem)

    def _input(self, hid, number, kind, property_name):
        device = hid / "input" / f"input{number}"
        self._device(device, "class/input", "")
        (device / "id").mkdir()
        for name, text in [("name", f"SYNA8004:00 06CB:CD8B {kind}"), ("id/bustype", "0018"), ("id/vendor", "06cb"),
                           ("inhibited", "0")]:
            (device / name).write_text(text + "\n")
        node = device / f"event{number}"
        self._device(node, "class/input", f"DEVNAME=input/event{number}\nID_INPUT=1\n{property_name}=1\n")
        for shown in (device, node):
            link = self._root / "sys/class/input" / shown.name
            link.symlink_to(os.path.relpath(shown, link.parent))
        return device / "inhibited"


def write_flag(text):
    """Writes the flag in place, as the application does."""
    flag = os.open(FLAG, os.O_WRONLY)
    os.pwrite(flag, text.encode(), 0)
    os.ftruncate(flag, len(text))
    os.close(flag)


def changes(world, pads):
    """Returns two lists of times in milliseconds by the word written, "on" or "off". Each time is from a write of the
    flag to the write of the touchpad's `inhibited` attribute."""
    helper = Helper(world, pads.environment)
    watcher = subprocess.Popen([world["watcher"], pads.attributes[-1]], stdout=subprocess.PIPE, text=True)
    watcher.stdout.readline()
    taken = {"on": [], "off": []}
    for _ in range(world["changes"]):
        for word, value in [("on", "1"), ("off", "0")]:
            time.sleep(PAUSE_SECONDS)
            begin = time.monotonic()
            write_flag(word)
            taken[word].append((float(watcher.stdout.readline().split()[1]) - begin) * 1000)
            until(lambda: pads.are(value))
    watcher.kill()
    watcher.wait()
    helper.end()
    return taken


def memory(world):
    """Returns the PSS in MiB of the helper, of `sleep`, which loads only libc, and of the peers. Runs one at a time."""
    helper = Helper(world)
    taken = {"ours": settled_pss(helper.pid)}
    helper.end()
    for name, command in {"sleep": ["sleep", "infinity"], **world["peers"]}.items():
        peer = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        taken[name] = settled_pss(peer.pid)
        peer.terminate()
        peer.wait()
    return taken


def settled_pss(pid):
    time.sleep(SETTLE_SECONDS)
    return processes.memory([pid])


def idle(world, pads):
    """Measures wake-ups and CPU time while nothing is muted, while a pad is muted, and during unrelated udev events."""
    taken = {}
    helper = Helper(world, pads.environment)
    time.sleep(START_SECONDS)
    taken["idle"] = session.measured_idle(helper.pid, world["idle"], foreign=False)
    write_flag("on")
    until(lambda: pads.are("1"))
    time.sleep(SETTLE_SECONDS)
    taken["muted"] = session.measured_idle(helper.pid, world["idle"], foreign=False)
    helper.end()
    helper = Helper(world)
    time.sleep(START_SECONDS)
    taken["idle with foreign events"] = session.measured_idle(helper.pid, world["idle"], foreign=True)
    helper.end()
    return taken


def storms(world, pads):
    """Returns the events per second of each storm, and the share of one core that the helper takes meanwhile."""
    NEIGHBOR.touch()
    helper = Helper(world, pads.environment)
    taken = {}
    for name, line in STORMS.items():
        time.sleep(SETTLE_SECONDS)
        watch = processes.Watch([helper.pid])
        script = (f"import os, time\nend, count = time.monotonic() + {STORM_SECONDS}, 0\n"
                  f"while time.monotonic() < end:\n    {line}\n    count += 1\nprint(count)")
        count = int(subprocess.run([sys.executable, "-c", script], stdout=subprocess.PIPE, check=True, text=True).stdout)
        taken[name] = {"events": count / STORM_SECONDS, "cpu": watch.cpu() / (STORM_SECONDS * 1000)}
    helper.end()
    return taken


if __name__ == "__main__":
    main()
