"""Registers the scenarios of the packages, and runs commands for them."""

import os
import subprocess

from waiting import check

SCENARIOS = {}


def scenario(sentence):
    """Registers a function as a scenario. The function receives the built packages (built.Built)."""
    def add(function):
        SCENARIOS[function.__name__] = (sentence, function)
        return function
    return add


def without_fakeroot():
    """Returns the environment of programs that see the real owners of files."""
    return {name: value for name, value in os.environ.items() if name not in ("FAKEROOTKEY", "LD_PRELOAD")}


def run(*command, **how):
    """Runs a command and returns its output. The scenario fails if the command fails."""
    done = subprocess.run(command, capture_output=True, text=True, timeout=300, **how)
    output = (done.stdout + done.stderr).strip()
    check(done.returncode == 0, f"{command[0]} ended with {done.returncode}: {output[-2000:]}")
    return done.stdout
