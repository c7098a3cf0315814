"""Opening the settings window, what it costs while it is open, and what is left of it."""

import json
import pathlib
import shlex
import subprocess

from tray import can_run, measure

INSIDE = pathlib.Path(__file__).resolve().parents[1] / "inside" / "openings.py"
OPENINGS = 50
CHANGES = 100_000


def run(report, tools, rounds, idle_seconds):
    if not can_run(report, tools, "the settings window"):
        return
    beside_floors(report, tools, rounds)
    many_openings(report, tools, idle_seconds)
    changes(report, tools)
    many_changes(report, tools)


def beside_floors(report, tools, rounds):
    measured = measure(tools, "tray-cost", ["-n", rounds, "-m", 2, "--idle", 1, "--click", "Settings…"],
                       [f"ours={tools.program}", f"exec={tools.floors / 'sni-exec'}", f"qt={tools.floors / 'qt-tray'}"])
    taken = measured["rounds"]
    for name, key, unit, beside, limit in [
            ("opening the window the first time, beside sni-exec", "open1", "ms", "exec", 1.3),
            ("opening it again, beside qt-tray", "open2", "ms", "qt", 1.5),
            ("PSS with the window open, beside qt-tray", "psso", "MiB", "qt", 1.25)]:
        pairs = [(ours[key], theirs[key]) for ours, theirs in zip(taken["ours"], taken[beside])
                 if key in ours and key in theirs]
        report.ratio(name, [ours for ours, _ in pairs], [theirs for _, theirs in pairs], unit, limit)


def many_openings(report, tools, idle_seconds):
    inside = [INSIDE, tools.program, OPENINGS, idle_seconds]
    command = [tools.measure / "floors" / "with-udevd", tools.measure / "with-driver", tools.measure / "tray-cost",
               "--run", shlex.join(map(str, inside))]
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, text=True)
    if done.returncode != 0:
        raise RuntimeError("the private session failed")
    found = json.loads(done.stdout.splitlines()[-1])
    report.at_most(f"window open and idle for {idle_seconds:.0f} s: wake-ups", found["wakeups"], 0, "a second")
    report.at_most(f"window open and idle for {idle_seconds:.0f} s: CPU", found["cpu"], 0, "ms")
    if found["last"] is None:
        raise RuntimeError("the window process did not outlive its openings")
    report.ratio(f"PSS after {OPENINGS} openings, beside after the first", [found["last"]], [found["first"]], "MiB", 1.02)
    report.at_most("60 s after closing: processes", found["processes_after"], 1, "")
    report.ratio("60 s after closing: PSS, beside before the first opening", [found["after"]], [found["before"]], "MiB",
                 1.1)


def changes(report, tools):
    times = [entry["cpu_time"] for entry in tools.benchmark("OneChangeOf200Devices", repetitions=9, program=tools.window_benchmarks)]
    report.at_most("one change with 200 devices in the window: CPU", sorted(times)[len(times) // 2], 16, "ms")


def many_changes(report, tools):
    command = [tools.measure / "tray-cost", "--run",
               shlex.join(map(str, [tools.many_changes, tools.program.with_name("ble-kovra-ui"), CHANGES]))]
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, text=True)
    if done.returncode != 0:
        raise RuntimeError("the private session failed")
    found = json.loads(done.stdout.splitlines()[-1])
    report.ratio(f"private dirty memory of the window process after {CHANGES:,} changes, beside after the first tenth", [found["dirty"][-1]],
                 [found["dirty"][0]], "MiB", 1.02)
    for what in ("descriptors", "threads"):
        report.at_most(f"{what} after closing, more than before", found[what + "_closed"] - found[what], 0, "")
