"""Plug to flag in the virtual machine of the system tests, beside a bare listener that hears of the same plugs."""

import contextlib
import os
import pathlib
import shutil
import statistics
import sys
import tempfile

from figures import say

ROOT = pathlib.Path(__file__).resolve().parents[2]
INSIDE = ROOT / "bench" / "inside"


def run(report, tools, plugs):
    sys.path.insert(0, str(ROOT / "tests" / "system"))
    import kernel
    from machine import Machine

    logs = pathlib.Path(tempfile.mkdtemp(prefix="kovra-bench-"))
    machine_kernel = kernel.prepare(ROOT / "build" / "vm" / "kernel", say)
    task = {"kind": "bench", "folder": str(INSIDE), "binary": str(tools.program),
            "modules": str(machine_kernel.modules), "watcher": str(tools.watcher), "plugs": plugs,
            "floor": str(tools.floors / "event-flag") if tools.floors else None}
    samples = []
    say(f"starting the virtual machine for {plugs} plugs")
    with before_all_others(), Machine(machine_kernel, logs) as machine:
        for message in machine.messages(task):
            if message["kind"] == "broken":
                raise RuntimeError(f"in the virtual machine (logs in {logs}): {message['text']}")
            samples.append(message)
            if len(samples) % 20 == 0:
                say(f"{len(samples)} of {plugs} plugs")
    shutil.rmtree(logs)

    ours = [sample["ours"] * 1e3 for sample in samples]
    report.plain("plug to flag in the virtual machine, median", f"{statistics.median(ours):.1f} ms")
    if not tools.floors:
        report.leave_out("the bare listener", "--floors is not given")
        return
    later = [(sample["ours"] - sample["floor"]) * 1e3 for sample in samples]
    beside = f"the listener took {statistics.median(sample['floor'] for sample in samples) * 1e3:.1f} ms"
    report.at_most("plug to flag, later than the listener, median", statistics.median(later), 3, "ms", beside)
    report.at_most("plug to flag, later than the listener, 90th percentile",
                   statistics.quantiles(later, n=10)[-1], 15, "ms")


@contextlib.contextmanager
def before_all_others():
    """Lets what is started in here run before other processes, which would delay either side by chance."""
    usual = os.sched_getscheduler(0), os.sched_getparam(0)
    try:
        os.sched_setscheduler(0, os.SCHED_RR, os.sched_param(1))
    except PermissionError:
        say("without the right to run before other processes: only a quiet machine gives true figures")
    try:
        yield
    finally:
        os.sched_setscheduler(0, *usual)
