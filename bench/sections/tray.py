"""The time and CPU time until the icon is in the tray, the memory and the idle cost, compared with the floors."""

import statistics

import private

FLOORS = ("item", "toolkit-program")


def run(report, tools, rounds, idle_seconds):
    taken = measure(tools, {name: [tools.floors / name] for name in FLOORS}, rounds, idle_seconds)
    for name, key, unit, beside, limit in [
            ("CPU to the icon", "cpu", "ms", "item", 1.3),
            ("time to the icon", "icon", "ms", "item", 1.4),
            ("CPU to the icon", "cpu", "ms", "toolkit-program", 0.35),
            ("time to the icon", "icon", "ms", "toolkit-program", 0.35),
            ("PSS with the icon", "pss", "MiB", "item", 1.5),
            ("private dirty memory with the icon", "dirty", "MiB", "item", 1.2)]:
        report.ratio(f"{name}, compared with floors/{beside}", *pairs(taken, key, "ours", beside), unit, limit)
        if tools.other and beside == "item":
            report.against_other(name, *pairs(taken, key, "ours", "other"), unit)
    idle = f"idle for {idle_seconds:.0f} s with the icon shown"
    for name, key, limit, unit in [("processes", "processes", 1, ""), ("threads", "threads", 1, ""),
                                   (f"{idle}: wake-ups", "wakeups", 0, "a second"), (f"{idle}: CPU", "idle", 0, "ms")]:
        report.at_most(name, median(taken["ours"], key), limit, unit)


def measure(tools, beside, rounds, idle_seconds, opened=None):
    """Returns the measurements of each round for our builds and for these commands."""
    measured = cost(tools, beside, "tray_cost.py", rounds=rounds, deep=2, idle=idle_seconds, open=opened)
    for name, reason in measured["failed"].items():
        raise private.CannotRun(f"{name}: {reason}")
    return measured["rounds"]


def cost(tools, beside, script, layer=None, **task):
    programs = {name: [str(build.program)] for name, build in tools.builds().items()}
    programs |= {name: [str(word) for word in command] for name, command in beside.items()}
    task |= {"programs": programs, "calm": tools.calm, "tray_host": str(tools.tray_host),
             "start_when_told": str(tools.start_when_told)}
    return private.run_script(script, task, layer)[-1]


def pairs(taken, key, one, other):
    """Returns this figure of both programs, from the rounds in which it was measured."""
    both = [(a[key], b[key]) for a, b in zip(taken[one], taken[other], strict=True) if key in a and key in b]
    return [a for a, _ in both], [b for _, b in both]


def median(rounds, key):
    return statistics.median(taken[key] for taken in rounds if key in taken)
