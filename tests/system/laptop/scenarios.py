"""Runs the scenarios of one of the laptops, in the order of its modules."""

import importlib

from laptop import Laptop
from running import run_all

# The modules of each machine. The machines take about equally long.
MODULES = {
    "laptop": ["ground", "muting", "control", "ends", "switching", "attacks", "storms", "floods", "left_files",
               "hidden_processes", "hanging", "bad_days", "sleeping", "random_life"],
    "installation": ["versions", "walls_of_the_helper", "installed", "activation", "packages", "upgrades"],
    "long": ["long_life"],
}


def run(host, task):
    modules = MODULES[task["machine"]]
    for name in modules:
        importlib.import_module(name)
    run_all(host, Laptop(host, task["packages"], task["earlier"], task["life"]), task["only"], modules)
