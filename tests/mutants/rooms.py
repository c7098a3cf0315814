"""The rooms whose sources are mutated: folders of sources with the same tests."""

import pathlib

from directives import SCRIPTS, UNITS
from planting import LOGIC, ROOT, Trouble, is_of_macos, tests_of

SOURCES = ("BLE_kovra", "helper")
# Compiled for a Mac, and here for the tests of the macOS layer alone.
FOR_MAC = "BLE_kovra/platform/posix/KqueueProcessEnd.cpp"


def rooms():
    """Returns the files of each room, by its name, as paths from the project's root."""
    found = {}
    for top in SOURCES:
        for path in sorted((ROOT / top).rglob("*")):
            file = str(path.relative_to(ROOT))
            if path.suffix in (".cpp", ".h") and not is_of_macos(file) and file != FOR_MAC:
                found.setdefault(_name(file), []).append(file)
    found["units"] = [str(path.relative_to(ROOT)) for pattern in UNITS for path in sorted(ROOT.glob(pattern))]
    found["scripts"] = [str(path.relative_to(ROOT)) for pattern in SCRIPTS for path in sorted(ROOT.glob(pattern))]
    return found


def chosen(names):
    """Returns the files of the rooms with these names, by the name that was given.

    "logic" means the rooms that need no system library. A room is also found by the last part of its name. A file, or a
    file with the number of a line ("FILE:31"), counts as a room of its own.
    """
    known = rooms()
    found = {}
    for name in names or [each for each in known if each != "scripts"]:
        if (ROOT / name.partition(":")[0]).is_file():
            found[name] = [name.partition(":")[0]]
        elif name == "logic":
            found[name] = [file for room in LOGIC for file in known[room]]
        else:
            own = [name] if name in known else [room for room in known if room.endswith(f"/{name}")]
            if not own:
                raise Trouble(f"there is no room {name}; there are: logic {' '.join(sorted(known))}")
            found.update({room: known[room] for room in own})
    return found


def lines_of(files):
    return sum(len((ROOT / file).read_text(encoding="utf-8").splitlines()) for file in files)


def _name(file):
    folder = pathlib.PurePath(file).parent
    if file.startswith("helper/"):
        return "helper"
    below = folder.parts[1:]
    return "/".join(below[:3]) if below[0] == "platform" else below[0]


def test_folders(file):
    """Returns the folders of the tests of this file's room, and those of other tests that may notice a change."""
    _, room, wider = tests_of(file)
    return room, wider
