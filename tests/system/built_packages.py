"""The Debian packages for the laptop, and the program in them."""

import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDER = ROOT / "build/packages"
# The program from the packages. Its window process and its icons are in the same folder.
PROGRAM = FOLDER / "program" / "ble-kovra"


class PackagesMissing(Exception):
    pass


def build():
    """Builds the packages, unless nothing has changed since the last build."""
    if subprocess.run([ROOT / "tools/build-packages"], check=False).returncode != 0:
        raise PackagesMissing("the Debian packages were not built")


def paths():
    """Returns the packages that were built last. If there are none, builds them now."""
    def built():
        return [str(path) for path in FOLDER.glob("ble-kovra*.deb") if "dbgsym" not in path.name]
    if not built():
        build()
    return built()
