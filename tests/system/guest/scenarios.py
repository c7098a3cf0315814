"""What the program promises to its user, each promise on a real kernel and seen from outside the process."""

import plugging
import lifetime
import adversity
import desktop
import launch
import wireless
from running import run_all
from world import World


def run(host, task):
    run_all(host, World(host, task["binary"], task["modules"]), task["only"])
