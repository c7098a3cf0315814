"""What the tests of the packages promise, each promise a function with a sentence."""

import subprocess

from waiting import check

SCENARIOS = {}


def scenario(sentence):
    """Makes a function a scenario. It is given the packages as they were built."""
    def add(function):
        SCENARIOS[function.__name__] = (sentence, function)
        return function
    return add


def run(*command, **how):
    """What this command says on its output; that it fails is a failure of the scenario."""
    done = subprocess.run(command, capture_output=True, text=True, timeout=120, **how)
    check(done.returncode == 0, f"{command[0]} ended with {done.returncode}: {(done.stdout + done.stderr).strip()[-2000:]}")
    return done.stdout
