"""The time of one change of the flag: the median of 300 changes, each after a short sleep.

The floor makes the fewest system calls that change the file in place. It is measured twice: in a process that does
nothing else, and in the process that also measures our change.
"""

import os
import subprocess
import tempfile

from figures import say


def run(report, tools, rounds):
    taken = {"ours": [], "bare": [], "floor": [], "other": []}
    with tempfile.TemporaryDirectory(prefix="kovra-bench-") as folder:
        kind = subprocess.run(["findmnt", "-n", "-o", "FSTYPE", "-T", folder], capture_output=True, text=True)
        where = f"flag write on {kind.stdout.strip() or 'an unknown file system'}"
        for number in range(rounds):
            say(f"{where}, round {number + 1} of {rounds}")
            for entry in tools.own.benchmark("^flag_write/", folder=folder):
                taken["ours" if "/ours" in entry["name"] else "bare"].append(entry["median_us"])
            floor = subprocess.run([tools.floors / "flag-write", os.path.join(folder, "flag")], stdout=subprocess.PIPE,
                                   text=True, check=True)
            taken["floor"].append(float(floor.stdout))
            if tools.other:
                [entry] = tools.other.benchmark("^flag_write/ours", folder=folder)
                taken["other"].append(entry["median_us"])
    report.ratio(where, taken["ours"], taken["floor"], "µs", 1.5)
    report.ratio(f"{where}, same process", taken["ours"], taken["bare"], "µs", 1.5)
    if tools.other:
        report.against_other(where, taken["ours"], taken["other"], "µs")
