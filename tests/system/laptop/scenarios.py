"""What the laptop's user is promised by the application, its helper and their packages together."""

import ground
import installed
import muting
import ends
import switching
# Last, since it leaves nothing of the packages.
import removal
from laptop import Laptop
from running import run_all


def run(host, task):
    run_all(host, Laptop(host, task["packages"]), task["only"])
