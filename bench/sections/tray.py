"""From the start to the icon in the tray, and what showing it costs, beside the floors and beside other tray programs.

Everything runs in a private session with a tray host: a udevd, a display and buses of its own, and the flag's folder in a
private mount.
"""

import json
import os
import subprocess
import tempfile


def run(report, tools, rounds, idle_seconds):
    if not can_run(report, tools, "the tray beside its floors"):
        return
    measured = measure(tools, "tray-cost", ["-n", rounds, "-m", 2, "--idle", idle_seconds],
                       [f"ours={tools.program}", f"full={tools.floors / 'sni-full'}", f"qt={tools.floors / 'qt-full'}"])
    taken = measured["rounds"]

    def ratio(name, key, unit, beside, limit):
        pairs = [(ours[key], theirs[key]) for ours, theirs in zip(taken["ours"], taken[beside])
                 if key in ours and key in theirs]
        report.ratio(name, [ours for ours, _ in pairs], [theirs for _, theirs in pairs], unit, limit)

    ratio("CPU to the icon, beside sni-full", "cpu", "ms", "full", 2)
    ratio("time to the icon, beside sni-full", "icon", "ms", "full", 2.5)
    ratio("CPU to the icon, beside qt-full", "cpu", "ms", "qt", 0.35)
    ratio("time to the icon, beside qt-full", "icon", "ms", "qt", 0.35)
    ratio("PSS with the icon, beside sni-full", "pss", "MiB", "full", 3)
    ratio("private dirty memory with the icon, beside sni-full", "dirty", "MiB", "full", 2.5)
    ours = measured["medians"]["ours"]
    report.at_most("processes", ours["prc"], 1, "")
    report.at_most("threads", ours["thr"], 1, "")
    report.at_most(f"idle for {idle_seconds:.0f} s with the icon shown: wake-ups", ours["wake"], 0, "a second")
    report.at_most(f"idle for {idle_seconds:.0f} s with the icon shown: CPU", ours["idle"], 0, "ms")


def run_peers(report, tools, rounds):
    if not can_run(report, tools, "the tray beside other programs"):
        return
    measured = measure(tools, "tray-peers", ["-n", rounds], [f"ours={tools.program}"])
    for name, reason in measured["failed"].items():
        report.leave_out(name, reason)
    ours = measured["medians"].pop("ours")
    peers = measured["medians"]
    report.plain("other tray programs that showed an icon", str(len(peers)))
    for what, key, unit, limit in [("CPU to the icon", "cpu", "ms", 0.5), ("PSS", "pss", "MiB", 1),
                                   ("private dirty memory", "dirty", "MiB", 1)]:
        best = min(peers, key=lambda name: peers[name][key])
        report.ratio(f"{what}, beside the least of them ({best})", [ours[key]], [peers[best][key]], unit, limit)
    best = min(peers, key=lambda name: peers[name]["wake"])
    report.at_most(f"wake-ups, beside the least of them ({best})", ours["wake"], peers[best]["wake"], "a second")


def can_run(report, tools, what):
    if not tools.measure or not tools.floors:
        report.leave_out(what, "--floors or --measure is not given")
    elif os.getuid() != 0:
        report.leave_out(what, "private mounts need root")
    else:
        return True
    return False


def measure(tools, instrument, options, programs):
    """Runs an instrument on the programs, in turns; returns its own account."""
    with tempfile.NamedTemporaryFile(suffix=".json") as account:
        command = [tools.measure / "floors" / "with-udevd", tools.measure / "with-driver", tools.measure / instrument,
                   *options, "--json", account.name, *programs]
        status = subprocess.run([str(word) for word in command]).returncode
        text = account.read()
    if not text:
        raise RuntimeError(f"{instrument} ended with {status} and no figures")
    return json.loads(text)
