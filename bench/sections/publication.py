"""One publication of the device list at several sizes, and all publications of a start with 1,000 devices.

The floor only builds the records and sorts them by cached keys. Our program handles the whole event: it finds the
device, determines the state of each device, builds and sorts the list, and passes it on. At a start it also creates the
sort keys. On both sides the minimum of seven repetitions counts in each round.
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
    """Builds the locale in the folder; returns an environment that uses it."""
    locale = pathlib.Path(folder) / f"{LANGUAGE}.UTF-8"
    # localedef also exits with status 1 after warnings about the source of the locale.
    made = subprocess.run(["localedef", "-i", LANGUAGE, "-f", "UTF-8", locale], capture_output=True, text=True)
    if not locale.is_dir():
        raise CannotRun(f"the locale {LANGUAGE} could not be built (package locales): {made.stderr[:200]}")
    return dict(os.environ, LOCPATH=folder, LC_ALL=locale.name)


def _collect(into, repetitions):
    least = {}
    for entry in repetitions:
        name = entry["run_name"]
        least[name] = min(least.get(name, entry["cpu_time"]), entry["cpu_time"])
    for name, value in least.items():
        into.setdefault(name, []).append(value)
