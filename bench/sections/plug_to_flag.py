"""The time from the plug to the flag in the virtual machine, compared with a minimal listener for the same events."""

import statistics

import machine_plugs


def run(report, tools, plugs):
    task = {"binary": str(tools.own.program), "watcher": str(tools.watcher), "floor": str(tools.floors / "listener")}
    samples = machine_plugs.take(plugs, task)
    report.plain("plug to flag in the virtual machine, median", f"{statistics.median(column(samples, 'ours')):.1f} ms")
    floor = statistics.median(column(samples, "floor"))
    later = [ours - its for ours, its in zip(column(samples, "ours"), column(samples, "floor"), strict=True)]
    for part, value, limit in [("median", statistics.median(later), 0.15),
                               ("90th percentile", statistics.quantiles(later, n=10)[-1], 0.76)]:
        report.ratio(f"plug to flag, later than the listener, {part}", [value], [floor], "ms", limit)


def column(samples, whose):
    return [sample[whose] * 1e3 for sample in samples]
