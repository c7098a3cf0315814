"""Collects the scenarios, runs them one after the other, and reports the results to the host."""

import subprocess
import traceback

from waiting import Failed, now

SCENARIOS = {}


def scenario(sentence):
    """Registers a function as a scenario. The sentence states what the program promises."""
    def add(function):
        SCENARIOS[function.__name__] = (sentence, function)
        return function
    return add


def run_all(host, world, only, modules):
    """Runs the scenarios of these modules, or only those of them that are named in `only`."""
    known = {name: each for module in modules for name, each in SCENARIOS.items() if each[1].__module__ == module}
    chosen = {name: known[name] for name in known if not only or name in only}
    host.report("plan", names=list(chosen), unknown=[name for name in only if name not in known])
    for name, (sentence, function) in chosen.items():
        start = now()
        reason, measured = _run(world, function)
        host.report("result", name=name, sentence=sentence, reason=reason, measured=measured, seconds=now() - start)


def _run(world, function):
    """Returns two texts: the reason why the scenario failed, and what it measured. Each may be None."""
    reason, measured = None, None
    try:
        world.prepare()
        measured = function(world)
    except Failed as failure:
        reason = str(failure)
    except Exception:
        reason = traceback.format_exc()
    if reason:
        _print_logs(world, reason)
    try:
        world.clean()
    except Exception as failure:
        reason = reason or f"cleaning up: {failure}"
    return reason, measured


def _print_logs(world, reason):
    """Prints to the machine's console. The host stores that output, and keeps it after a failure."""
    print(f"---- {reason}", flush=True)
    print("output of the programs:", world.last_words(), sep="\n", flush=True)
    print("kernel log:", flush=True)
    subprocess.run("/bin/busybox dmesg | /bin/busybox tail -n 40", shell=True, check=False)
