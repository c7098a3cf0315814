"""The time from the plug to the flag in the virtual machine, compared with a minimal listener for the same events."""

import statistics

import machine_plugs


def run(report, tools, plugs):
    task = {"binary": str(tools.own.program), "watcher": str(tools.watcher), "floor": str(tools.floors / "listener")}
    samples = machine_plugs.take(plugs, task)
    report.plain("plug to flag in the virtual machine, median", f"{median(samples, 'ours'):.1f} ms")
    later = [(sample["ours"] - sample["floor"]) * 1e3 for sample in samples]
    report.at_most("plug to flag, later than the listener, median", statistics.median(later), 3, "ms",
                   f"the listener took {median(samples, 'floor'):.1f} ms")
    report.at_most("plug to flag, later than the listener, 90th percentile",
                   statistics.quantiles(later, n=10)[-1], 15, "ms")


def median(samples, whose):
    return statistics.median(sample[whose] for sample in samples) * 1e3
