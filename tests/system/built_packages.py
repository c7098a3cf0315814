"""Builds the Debian packages with tools/build-packages, and returns their paths."""

import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDER = ROOT / "build/packages"
# The script tools/build-packages copies the program to this path, with its window process and its icons beside it.
PROGRAM = FOLDER / "program" / "ble-kovra"


class PackagesMissing(Exception):
    pass


def build():
    """Builds the packages, unless neither the tree nor the compiler has changed since the last build."""
    if subprocess.run([ROOT / "tools/build-packages"], check=False).returncode != 0:
        raise PackagesMissing("the Debian packages were not built")


def paths(folder=FOLDER):
    """Returns the paths of the packages in a folder. Builds the packages first if FOLDER has none."""
    def found():
        return [str(path) for path in folder.resolve().glob("ble-kovra*.deb") if "dbgsym" not in path.name]
    if not found() and folder == FOLDER:
        build()
    if not found():
        raise PackagesMissing(f"there are no packages in {folder}")
    return found()
