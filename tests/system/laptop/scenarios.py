"""All scenarios of the laptop: what the application, its helper and the packages promise together."""

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
# This one is last, since it removes the packages.
import removal
from laptop import Laptop
from running import run_all


def run(host, task):
    run_all(host, Laptop(host, task["packages"]), task["only"])
