"""Runs the scenarios of the bare machine, in the order of the imports."""

import plugging
import lifetime
import instances
import adversity
import desktop
import launch
import wireless
from running import run_all
from world import World


def run(host, task):
    run_all(host, World(host, task["binary"], task["modules"]), task["only"])
