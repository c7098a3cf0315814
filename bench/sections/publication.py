"""One publication of the device list at growing sizes, and those of a start with 1,000 devices attached.

The floor makes the records and sorts them by kept keys. Ours is the whole event: the device looked up, who is connected
asked for each device, the list made, sorted and handed over; at a start also the keys made. Both sides: the least of
seven, as the floor measures.
"""

import os
import pathlib
import subprocess
import tempfile

from figures import say

SIZES = [10, 100, 1000, 10000]
LANGUAGE = "en_US"
COLUMN = "strxfrm"


def run(report, tools, rounds):
    ours, floor = {}, {}
    with tempfile.TemporaryDirectory(prefix="kovra-bench-") as folder:
        locale = pathlib.Path(folder) / f"{LANGUAGE}.UTF-8"
        # It ends with 1 after mere warnings about the locale's source.
        made = subprocess.run(["localedef", "-i", LANGUAGE, "-f", "UTF-8", locale], capture_output=True, text=True)
        if not locale.is_dir():
            report.leave_out("publication", f"no locale {LANGUAGE} could be made (package locales): {made.stderr[:200]}")
            return
        environment = dict(os.environ, LOCPATH=folder, LC_ALL=f"{LANGUAGE}.UTF-8")
        for number in range(rounds):
            say(f"publication, round {number + 1} of {rounds}")
            _collect(ours, _ours(tools, environment))
            if tools.floors:
                _collect(floor, _floor(tools, environment))
    for size in SIZES:
        report.ratio(f"publication of {size:,} devices", ours[size], floor.get(size), "µs", 1.3)
    report.ratio("publications of a start with 1,000", ours["start"], floor.get("start"), "ms", 1.5)


def _collect(into, figures):
    for name, value in figures.items():
        into.setdefault(name, []).append(value)


def _ours(tools, environment):
    runs = tools.benchmark("^(publication|start)/", environment=environment, repetitions=7, seconds=0.015)
    least = {}
    for entry in runs:
        name = entry["run_name"]
        least[name] = min(least.get(name, entry["real_time"]), entry["real_time"])
    return {size: least[f"publication/{size}"] for size in SIZES} | {"start": least["start/1000"]}


def _floor(tools, environment):
    command = [tools.floors / "publish", LANGUAGE, str(SIZES[-1])]
    lines = subprocess.run(command, env=environment, capture_output=True, text=True, check=True).stdout.splitlines()
    single = lines[lines.index("ns per publication") + 1:]
    start = lines[next(i for i, line in enumerate(lines) if line.startswith("start with N")) + 1:]
    figures = {size: _cell(single, size) / 1e3 for size in SIZES}
    return figures | {"start": _cell(start, 1000)}


def _cell(table, size):
    column = table[0].split().index(COLUMN)
    return next(float(row.split()[column]) for row in table[1:] if row.split()[0] == str(size))
