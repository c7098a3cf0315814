"""Counts what a process of the program holds: memory, descriptors, threads, watches, children."""

import collections
import pathlib
import re

from application import state_of

# `memory` is what no other process shares, in KiB. `children` counts zombies, too.
Resources = collections.namedtuple("Resources", "memory descriptors threads watches children")
PRIVATE = re.compile(r"^Private_(?:Clean|Dirty): +(\d+) kB$", re.M)


def held_by(pid):
    """Returns the resources of the process."""
    process = pathlib.Path(f"/proc/{pid}")
    descriptors = list((process / "fdinfo").iterdir())
    return Resources(
        memory=sum(map(int, PRIVATE.findall((process / "smaps_rollup").read_text()))),
        descriptors=len(descriptors),
        threads=len(list((process / "task").iterdir())),
        watches=sum(path.read_text().count("inotify ") for path in descriptors),
        children=sum(len((task / "children").read_text().split()) for task in (process / "task").iterdir()))


def zombies():
    """Returns the names of the processes that have ended, and that nobody has waited for."""
    return [(process / "comm").read_text().strip() for process in pathlib.Path("/proc").glob("[0-9]*")
            if state_of(process.name) == "Z"]


def files_in(*folders):
    """Returns the paths of all files in these folders."""
    return sorted(str(path) for folder in folders for path in pathlib.Path(folder).rglob("*"))
