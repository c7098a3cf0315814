"""Registers the scenarios of the packages, and runs commands for them."""

import subprocess

from waiting import check

SCENARIOS = {}


def scenario(sentence):
    """Registers a function as a scenario. The function receives the built packages (built.Built)."""
    def add(function):
        SCENARIOS[function.__name__] = (sentence, function)
        return function
    return add


def run(*command, **how):
    """Runs a command and returns its output. The scenario fails if the command fails."""
    done = subprocess.run(command, capture_output=True, text=True, timeout=300, **how)
    output = (done.stdout + done.stderr).strip()
    check(done.returncode == 0, f"{command[0]} ended with {done.returncode}: {output[-2000:]}")
    return done.stdout
