"""The Debian packages for the laptop."""

import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDER = ROOT / "build/packages"


class PackagesMissing(Exception):
    pass


def paths():
    """Returns the packages that were built last. If there are none, builds them now."""
    def built():
        return [str(path) for path in FOLDER.glob("ble-kovra*.deb") if "dbgsym" not in path.name]
    if not built() and subprocess.run([ROOT / "tools/build-packages"]).returncode != 0:
        raise PackagesMissing("the Debian packages were not built")
    return built()
