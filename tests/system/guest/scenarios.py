"""Runs the scenarios of the bare machine, in the order of its modules."""

import importlib

from running import run_all
from world import World

MODULES = ["plugging", "lifetime", "instances", "adversity", "desktop", "launch", "wireless"]


def run(host, task):
    for name in MODULES:
        importlib.import_module(name)
    run_all(host, World(host, task["binary"], task["modules"]), task["only"], MODULES)
