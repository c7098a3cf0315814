"""The CPU time until the icon is in the tray, the memory and the wake-ups, compared with other tray programs."""

import peers
from tray import cost, median

IDLE_SECONDS = 20


def run(report, tools, rounds):
    measured = cost(tools, peers.COMMANDS, "peers.py", layer=peers.prepare(), rounds=rounds, deep=1, idle=IDLE_SECONDS)
    for name, reason in measured["failed"].items():
        report.leave_out(name, reason)
    taken = measured["rounds"]
    ours = taken.pop("ours")
    taken.pop("other", None)
    report.plain("other tray programs that showed an icon", str(len(taken)))

    def least(key):
        name = min(taken, key=lambda peer: median(taken[peer], key))
        return name, median(taken[name], key)

    for what, key, unit, limit in [("CPU to the icon", "cpu", "ms", 0.5), ("PSS", "pss", "MiB", 1),
                                   ("private dirty memory", "dirty", "MiB", 1)]:
        name, value = least(key)
        report.ratio(f"{what}, compared with the lowest of them ({name})", [median(ours, key)], [value], unit, limit)
    name, value = least("wakeups")
    report.at_most(f"wake-ups, compared with the lowest of them ({name})", median(ours, "wakeups"), value, "a second")
