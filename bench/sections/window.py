"""Opening the settings window, its cost while it is open, and what remains after it is closed."""

import private
from tray import measure, pairs

OPENINGS = 50
CHANGES = 100_000


def run(report, tools, rounds, idle_seconds):
    beside_floors(report, tools, rounds)
    many_openings(report, tools, idle_seconds)
    one_change(report, tools)
    many_changes(report, tools)


def beside_floors(report, tools, rounds):
    program, toolkit = "item-and-program", "toolkit-item-and-window"
    taken = measure(tools, {name: [tools.floors / name] for name in (program, toolkit)}, rounds, 1, opened="Settings…")
    for name, key, unit, beside, limit in [
            ("opening the window the first time", "first", "ms", program, 1.05),
            ("opening it again", "second", "ms", toolkit, 1.5),
            ("PSS with the window open", "open_pss", "MiB", toolkit, 1.25)]:
        report.ratio(f"{name}, compared with floors/{beside}", *pairs(taken, key, "ours", beside), unit, limit)
        if tools.other:
            report.against_other(name, *pairs(taken, key, "ours", "other"), unit)


def many_openings(report, tools, idle_seconds):
    task = {"program": str(tools.own.program), "tray_host": str(tools.tray_host)}
    [found] = private.run_script("openings.py", task | {"openings": OPENINGS, "idle": idle_seconds})
    report.at_most(f"window open and idle for {idle_seconds:.0f} s: wake-ups", found["wakeups"], 0, "a second")
    report.at_most(f"window open and idle for {idle_seconds:.0f} s: CPU", found["cpu"], 0, "ms")
    if found["last"] is None:
        raise private.CannotRun("the window process ended before the last opening")
    report.ratio(f"PSS after {OPENINGS} openings, compared with after the first", [found["last"]], [found["first"]],
                 "MiB", 1.02)
    report.at_most("60 s after closing: processes", found["processes_after"], 1, "")
    report.ratio("60 s after closing: PSS, compared with before the first opening", [found["after"]],
                 [found["before"]], "MiB", 1.1)


def one_change(report, tools):
    taken = {name: [] for name in tools.builds()}
    for _ in range(9):
        for name, build in tools.builds().items():
            [entry] = build.benchmark("OneChangeOf200Devices", binary="kovra_window_bench")
            taken[name].append(entry["cpu_time"])
    name = "one change with 200 devices in the window: CPU"
    report.at_most(name, sorted(taken["ours"])[len(taken["ours"]) // 2], 16, "ms")
    if tools.other:
        report.against_other(name, taken["ours"], taken["other"], "ms")


def many_changes(report, tools):
    [found] = private.on_desktop(tools.many_changes, tools.own.window_program, CHANGES)
    name = f"private dirty memory of the window process after {CHANGES:,} changes, compared with after the first tenth"
    report.ratio(name, [found["dirty"][-1]], [found["dirty"][0]], "MiB", 1.02)
    for what in ("descriptors", "threads"):
        report.at_most(f"increase of {what} by closing the window", found[what + "_closed"] - found[what], 0, "")
