"""The time from the plug to the flag in the virtual machine, compared with a minimal listener for the same events."""

import statistics

import machine_plugs


def run(report, tools, plugs):
    task = {"binary": str(tools.own.program), "watcher": str(tools.watcher), "floor": str(tools.floors / "listener")}
    samples = machine_plugs.take(plugs, task)
    for part, of, limit in [("median", statistics.median, 1.15), ("90th percentile", percentile_90, 1.75)]:
        ours, floor = (of([sample[side] * 1e3 for sample in samples]) for side in ("ours", "floor"))
        report.ratio(f"plug to flag in the virtual machine, {part}", [ours], [floor], "ms", limit)


def percentile_90(values):
    return statistics.quantiles(values, n=10)[-1]
