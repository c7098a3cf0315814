"""Plug to dead touchpad, and removal to living one, on the virtual laptop of the system tests with the packages installed."""

import pathlib
import shutil
import statistics
import sys
import tempfile

from figures import say
from plug_to_flag import before_all_others

ROOT = pathlib.Path(__file__).resolve().parents[2]


def run(report, plugs):
    sys.path.insert(0, str(ROOT / "tests" / "system"))
    import built_packages
    import kernel
    from machine import LAPTOP, Machine

    logs = pathlib.Path(tempfile.mkdtemp(prefix="kovra-bench-"))
    task = {"kind": "bench", "folder": str(ROOT / "bench" / "inside"), "packages": built_packages.paths(), "plugs": plugs}
    samples = []
    say(f"starting the virtual laptop for {plugs} plugs")
    with before_all_others(), Machine(kernel.prepare(ROOT / "build" / "vm" / "kernel", say), logs, LAPTOP) as machine:
        for message in machine.messages(task):
            if message["kind"] == "broken":
                raise RuntimeError(f"on the virtual laptop (logs in {logs}): {message['text']}")
            samples.append(message)
            if len(samples) % 20 == 0:
                say(f"{len(samples)} of {plugs} plugs")
    shutil.rmtree(logs)
    for name, key in [("plug to dead touchpad", "dead"), ("removal to living touchpad, less the 2.0 s", "back")]:
        taken = sorted(sample[key] * 1e3 for sample in samples)
        report.plain(f"{name}, median", f"{statistics.median(taken):.1f} ms")
        report.plain(f"{name}, 99th percentile", f"{taken[(len(taken) * 99 - 1) // 100]:.1f} ms")
