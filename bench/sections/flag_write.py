"""One change of the flag: the median of 300 after a short sleep each, beside the fewest calls that do it in place."""

import os
import re
import subprocess
import tempfile

from figures import say


def run(report, tools, rounds):
    ours, bare, floor = [], [], []
    with tempfile.TemporaryDirectory(prefix="kovra-bench-") as folder:
        kind = subprocess.run(["findmnt", "-n", "-o", "FSTYPE", "-T", folder], capture_output=True, text=True)
        where = f"flag write on {kind.stdout.strip() or 'an unknown file system'}"
        for number in range(rounds):
            say(f"{where}, round {number + 1} of {rounds}")
            for entry in tools.benchmark("^flag_write/", folder=folder):
                (ours if "/ours" in entry["name"] else bare).append(entry["median_us"])
            if tools.floors:
                floor.append(_floor(tools, os.path.join(folder, "flag")))
    report.ratio(where, ours, floor, "µs", 1.5)
    report.ratio(f"{where}, same process", ours, bare, "µs", 1.5)


def _floor(tools, flag):
    command = [tools.floors / "event-flag", "pair", flag, "1500"]
    output = subprocess.run(command, capture_output=True, text=True, check=True).stdout
    return float(re.search(r"open-in-place.*\twrite ([\d.]+)", output).group(1))
