"""Plug to flag in the virtual machine of the system tests, beside a bare listener that hears of the same plugs."""

import statistics

import machine_plugs


def run(report, tools, plugs):
    task = {"binary": str(tools.program), "watcher": str(tools.watcher),
            "floor": str(tools.floors / "event-flag") if tools.floors else None}
    samples = machine_plugs.take(plugs, task)
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
