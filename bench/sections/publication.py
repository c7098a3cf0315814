"""One publication of the device list at growing sizes, and those of a start with 1,000 devices attached.

The floor makes the records and sorts them by kept keys. Ours is the whole event: the device looked up, who is connected
asked for each device, the list made, sorted and handed over; at a start also the keys made. Both sides: the least of
seven.
"""

import os
import pathlib
import subprocess
import tempfile

from builds import benchmark
from figures import say
from private import CannotRun

SIZES = [10, 100, 1000, 10000]
LANGUAGE = "en_US"


def run(report, tools, rounds):
    taken = {}
    with tempfile.TemporaryDirectory(prefix="kovra-bench-") as folder:
        how = {"environment": environment(folder), "repetitions": 7, "seconds": 0.015}
        for number in range(rounds):
            say(f"publication, round {number + 1} of {rounds}")
            for name, build in tools.builds().items():
                _collect(taken.setdefault(name, {}), build.benchmark("^(publication|start)/", **how))
            _collect(taken.setdefault("floor", {}), benchmark(tools.floors / "publication", ".", **how))
    for name, key, unit, limit in [
            *((f"publication of {size:,} devices", f"publication/{size}", "µs", 1.3) for size in SIZES),
            ("publications of a start with 1,000", "start/1000", "ms", 1.5)]:
        report.ratio(name, taken["ours"][key], taken["floor"][key], unit, limit)
        if tools.other:
            report.against_other(name, taken["ours"][key], taken["other"][key], unit)


def environment(folder):
    """For programs that speak the language; its locale is made in the folder."""
    locale = pathlib.Path(folder) / f"{LANGUAGE}.UTF-8"
    # It ends with 1 after mere warnings about the locale's source.
    made = subprocess.run(["localedef", "-i", LANGUAGE, "-f", "UTF-8", locale], capture_output=True, text=True)
    if not locale.is_dir():
        raise CannotRun(f"no locale {LANGUAGE} could be made (package locales): {made.stderr[:200]}")
    return dict(os.environ, LOCPATH=folder, LC_ALL=locale.name)


def _collect(into, repetitions):
    least = {}
    for entry in repetitions:
        name = entry["run_name"]
        least[name] = min(least.get(name, entry["cpu_time"]), entry["cpu_time"])
    for name, value in least.items():
        into.setdefault(name, []).append(value)
