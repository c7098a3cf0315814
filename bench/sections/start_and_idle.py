"""The start of the program, and what it costs while nothing happens to it.

Everything runs in a private session: a udevd, a display and buses of its own, and the flag's folder in a private mount.
"""

import json
import os
import pathlib
import shlex
import subprocess
import sys

INSIDE = pathlib.Path(__file__).resolve().parents[1] / "inside" / "session.py"


def run(report, tools, rounds, idle_seconds):
    if not tools.measure:
        report.leave_out("start and idle", "--measure is not given")
        return
    if os.getuid() != 0:
        report.leave_out("start and idle", "private mounts need root")
        return
    floor = tools.floors / "sni-full" if tools.floors else ""
    inside = [sys.executable, INSIDE, tools.program, floor, rounds, idle_seconds]
    command = [tools.measure / "floors" / "with-udevd", tools.measure / "with-driver", tools.measure / "tray-cost",
               "--run", shlex.join(map(str, inside))]
    with subprocess.Popen(command, stdout=subprocess.PIPE, text=True) as session:
        results = [json.loads(line) for line in session.stdout]
    if session.returncode != 0:
        raise RuntimeError("the private session failed")

    ours = [result for result in results if result["kind"] == "start" and result["program"] == "ours"]
    theirs = [result for result in results if result["kind"] == "start" and result["program"] == "floor"]
    for name, key, unit, limit in [("start: CPU to the first evaluation", "cpu", "ms", 2),
                                   ("start: CPU until at rest", "rest", "ms", None),
                                   ("start: PSS after 3 s", "pss", "MiB", 2),
                                   ("start: private dirty memory after 3 s", "dirty", "MiB", None)]:
        report.ratio(name, [start[key] for start in ours], [start[key] for start in theirs], unit, limit)
    for idle in (result for result in results if result["kind"] == "idle"):
        during = f"idle for {idle['seconds']:.0f} s"
        if idle["foreign"]:
            during += f" with {idle['foreign']:.0f} foreign events a second"
        report.at_most(f"{during}: wake-ups", idle["wakeups"], 0, "a second")
        report.at_most(f"{during}: CPU", idle["cpu"], 0, "ms")
