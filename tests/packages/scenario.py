"""The scenarios of the packages. Each is a function with a sentence that says what the packages promise."""

import subprocess

from waiting import check

SCENARIOS = {}


def scenario(sentence):
    """Makes a function a scenario. The function receives the built packages (built.Built)."""
    def add(function):
        SCENARIOS[function.__name__] = (sentence, function)
        return function
    return add


def run(*command, **how):
    """Returns the output of a command. If the command fails, the scenario fails."""
    done = subprocess.run(command, capture_output=True, text=True, timeout=300, **how)
    output = (done.stdout + done.stderr).strip()
    check(done.returncode == 0, f"{command[0]} ended with {done.returncode}: {output[-2000:]}")
    return done.stdout
