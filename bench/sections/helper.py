"""The privileged helper: its memory, its cost when idle and in storms of events, and the time from the flag to the
muted pad.

The real helper runs in a private mount namespace, with a simulated pad and a UID that no user account has.
"""

import json
import pathlib
import statistics
import subprocess
import tempfile

import private
from figures import say

MOUNT_POINT = pathlib.Path("/Library")
# Small services of Debian that run in the background. They are downloaded, unpacked and started in place.
PEERS = {"acpid": ["usr/sbin/acpid", "-f", "-c", "etc/acpi/events", "-s", "/run/acpid.socket"],
         "irqbalance": ["usr/sbin/irqbalance", "-f"]}


def run(report, tools, changes, idle_seconds):
    private.need_root()
    with tempfile.TemporaryDirectory(prefix="kovra-bench-", dir="/dev/shm") as folder:
        results = measured(tools, folder, changes, idle_seconds, fetched(folder, report))
    for word, moments in [("on", "muted"), ("off", "unmuted")]:
        times = sorted(results["changes"][word])
        report.at_most(f"flag to {moments}, median of {len(times)}", statistics.median(times), 1, "ms")
        report.plain("the same, 99th percentile", f"{times[int(len(times) * 0.99)]:.2f} ms")
    memory = results["memory"]
    bare = memory.pop("sleep")
    ours = memory.pop("ours")
    report.plain("PSS", f"{ours:.2f} MiB")
    report.at_most("PSS, more than that of sleep, which has libc alone", ours - bare, 2, "MiB", f"sleep {bare:.2f} MiB")
    for name, theirs in memory.items():
        report.ratio(f"PSS compared with {name}", [ours], [theirs], "MiB")
    for name, idle in results["idle"].items():
        report.at_most(f"{name} for {idle_seconds:.0f} s: wake-ups", idle["wakeups"], 0, "a second")
        report.at_most(f"{name} for {idle_seconds:.0f} s: CPU", idle["cpu"], 0, "ms")
    for name, storm in results["storms"].items():
        report.at_most(f"{name} {storm['events']:,.0f} times a second: CPU", storm["cpu"] * 100, 2, "% of a core")


def measured(tools, folder, changes, idle_seconds, peers):
    world = json.dumps({"daemon": str(tools.helper), "watcher": str(tools.watcher), "folder": folder,
                        "changes": changes, "idle": idle_seconds, "peers": peers})
    is_made = not MOUNT_POINT.exists()
    MOUNT_POINT.mkdir(exist_ok=True)
    try:
        [found] = private.beside_udevd(*private.PYTHON, private.INSIDE / "laptop.py", world)
        return found
    finally:
        if is_made:
            MOUNT_POINT.rmdir()


def fetched(folder, report):
    """Downloads the peers; returns the commands of those that are available."""
    commands = {}
    for name, (program, *arguments) in PEERS.items():
        place = pathlib.Path(folder) / name
        place.mkdir()
        say(f"fetching {name}")
        done = subprocess.run(["apt-get", "download", name], cwd=place, capture_output=True)
        packages = list(place.glob("*.deb"))
        if done.returncode != 0 or not packages:
            report.leave_out(f"PSS compared with {name}", "apt-get cannot fetch it")
            continue
        subprocess.run(["dpkg-deb", "-x", packages[0], place], check=True)
        commands[name] = [str(place / program)] + [str(place / word) if word.startswith("etc/") else word
                                                   for word in arguments]
    return commands
