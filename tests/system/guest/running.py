"""How the scenarios are collected, run one after the other, and reported."""

import subprocess
import traceback

from waiting import Failed, now

SCENARIOS = {}


def scenario(sentence):
    """Makes a function a scenario. The sentence says what the program promises."""
    def add(function):
        SCENARIOS[function.__name__] = (sentence, function)
        return function
    return add


def run_all(host, world, only):
    chosen = {name: SCENARIOS[name] for name in SCENARIOS if not only or name in only}
    host.report("plan", names=list(chosen), unknown=[name for name in only if name not in SCENARIOS])
    for name, (sentence, function) in chosen.items():
        start = now()
        reason, measured = _run(world, function)
        host.report("result", name=name, sentence=sentence, reason=reason, measured=measured, seconds=now() - start)


def _run(world, function):
    """The reason of the failure, or None, and what the scenario measured, as text."""
    reason, measured = None, None
    try:
        world.prepare()
        measured = function(world)
    except Failed as failure:
        reason = str(failure)
    except Exception:
        reason = traceback.format_exc()
    if reason:
        _log_for_the_reader(world, reason)
    try:
        world.clean()
    except Exception as failure:
        reason = reason or f"cleaning up: {failure}"
    return reason, measured


def _log_for_the_reader(world, reason):
    """On the console, which the host keeps when something failed."""
    print(f"---- {reason}", flush=True)
    print("the programs said:", world.last_words(), sep="\n", flush=True)
    print("the kernel said:", flush=True)
    subprocess.run("/bin/busybox dmesg | /bin/busybox tail -n 40", shell=True, check=False)
