"""The times from plug to muted touchpad, and from removal to unmuted touchpad, on the virtual laptop, compared with a
minimal listener that writes a touchpad's attribute itself."""

import statistics

import built_packages
import machine_plugs
from machine import LAPTOP


def run(report, tools, plugs):
    task = {"packages": built_packages.paths(), "floor": str(tools.floors / "pad-listener")}
    *samples, memory = machine_plugs.take(plugs, task, LAPTOP)
    for name, key, limit in [("plug to muted touchpad", "dead", 1.5),
                             ("removal to unmuted touchpad, less the 2.0 s", "back", None)]:
        for part, of in [("median", statistics.median), ("99th percentile", percentile_99)]:
            ours, floor = (of([sample[key][side] * 1e3 for sample in samples]) for side in ("ours", "floor"))
            report.ratio(f"{name}, {part}", [ours], [floor], "ms", limit)
    report.at_most("PSS of the helper there, more than that of sleep", memory["ours"] - memory["sleep"], 1, "MiB",
                   f"sleep {memory['sleep']:.2f} MiB")


def percentile_99(values):
    return sorted(values)[(len(values) * 99 - 1) // 100]
