"""The cost of a start until the first evaluation and until the program is at rest, and the idle cost."""

import private


def run(report, tools, rounds, idle_seconds):
    programs = {name: str(build.program) for name, build in tools.builds().items()}
    programs["floor"] = str(tools.floors / "item")
    results = private.run_script("session.py", {"programs": programs, "rounds": rounds, "idle": idle_seconds,
                                                "tray_host": str(tools.tray_host)})

    def starts(program, key):
        return [result[key] for result in results if result["kind"] == "start" and result["program"] == program]

    for name, key, unit, limit in [("start: CPU to the first evaluation", "cpu", "ms", 2),
                                   ("start: CPU until at rest", "rest", "ms", 1.5),
                                   ("start: PSS after 3 s", "pss", "MiB", 1.5),
                                   ("start: private dirty memory after 3 s", "dirty", "MiB", 1.2)]:
        report.ratio(name, starts("ours", key), starts("floor", key), unit, limit)
        if tools.other:
            report.against_other(name, starts("ours", key), starts("other", key), unit)
    for idle in (result for result in results if result["kind"] == "idle"):
        during = f"idle for {idle['seconds']:.0f} s"
        if not idle["udevd"]:
            during += " without udevd"
        if idle["foreign"]:
            during += f" with {idle['foreign']:.0f} foreign events a second"
        report.at_most(f"{during}: wake-ups", idle["wakeups"], 0, "a second")
        report.at_most(f"{during}: CPU", idle["cpu"], 0, "ms")
