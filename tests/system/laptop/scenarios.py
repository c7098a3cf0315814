"""Runs the scenarios of the laptop, in the order of the imports."""

import ground
import installed
import muting
import ends
import switching
import attacks
import storms
import left_files
import walls_of_the_helper
import versions
import hidden_processes
import hanging
import bad_days
# Last, since its scenarios purge the packages.
import removal
from laptop import Laptop
from running import run_all


def run(host, task):
    run_all(host, Laptop(host, task["packages"]), task["only"])
