"""The times from plug to muted touchpad, and from removal to unmuted touchpad, on the virtual laptop."""

import statistics

import built_packages
import machine_plugs
from machine import LAPTOP


def run(report, plugs):
    samples = machine_plugs.take(plugs, {"packages": built_packages.paths()}, LAPTOP)
    for name, key in [("plug to muted touchpad", "dead"), ("removal to unmuted touchpad, less the 2.0 s", "back")]:
        taken = sorted(sample[key] * 1e3 for sample in samples)
        report.plain(f"{name}, median", f"{statistics.median(taken):.1f} ms")
        report.plain(f"{name}, 99th percentile", f"{taken[(len(taken) * 99 - 1) // 100]:.1f} ms")
