"""The built packages: their paths, their fields and their files."""

import re

from scenario import run
from waiting import check

NAMES = ("ble-kovra", "ble-kovra-helper")


class Built:
    def __init__(self, tree, folder):
        self.tree, self.folder = tree, folder
        self.packages = tree / "build/packages"

    @property
    def version(self):
        return re.search(r"^project\(BLE-kovra VERSION (\S+)", (self.tree / "CMakeLists.txt").read_text(), re.M)[1]

    @property
    def build(self):
        """The folder in which CMake has built the packages."""
        found = [*self.packages.glob("source/obj-*")]
        check(len(found) == 1, f"there is not one build: {found}")
        return found[0]

    def package(self, name):
        found = [*self.packages.glob(f"{name}_{self.version}_*.deb")]
        check(len(found) == 1, f"{name} {self.version} was not built: there are {found}")
        return found[0]

    def field(self, name, field):
        return run("dpkg-deb", "--field", self.package(name), field).strip()

    def unpacked(self, name):
        """Returns a folder with the files of this package."""
        place = self.folder / "unpacked" / name
        if not place.exists():
            place.mkdir(parents=True)
            run("dpkg-deb", "--extract", self.package(name), place)
        return place

    def files(self, name):
        """Returns the absolute paths of the files in this package, without folders."""
        place = self.unpacked(name)
        files = (path for path in place.rglob("*") if path.is_symlink() or not path.is_dir())
        return {"/" + str(path.relative_to(place)) for path in files}
