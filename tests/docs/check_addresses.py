#!/usr/bin/env python3
"""Checks that the files of the packages have the project's support address and home page.

  check_addresses.py [ROOT]      ROOT: the project's folder; by default the one that contains this file

The support address is the constant in BLE_kovra/l10n/SupportAddress.h. The home page is HOMEPAGE_URL of the project in
CMakeLists.txt. In debian and packaging every mail address and every home page must be the same. The sources of the
programs must not repeat them. The check prints one line for each difference. Its exit status is 1 if there is any.
"""
import pathlib
import re
import sys

SUPPORT = "BLE_kovra/l10n/SupportAddress.h"
MAIL = re.compile(r"[\w.+-]+@[\w-]+(?:\.[\w-]+)+")
# A field of debian/control or of an RPM spec, a variable of a PKGBUILD, and a tag of the metainfo.
HOME_PAGE = re.compile(r"^(?:Homepage|URL):[ \t]*(\S*)|^url=['\"]?([^'\"\n]*)|<url type=\"homepage\">([^<]*)<", re.M)
# What must be named, and in which files.
NAMED = (("support address", MAIL, ("debian/changelog", "debian/control", "debian/copyright",
                                    "packaging/org.ble_kovra.BLEKovra.metainfo.xml")),
         ("home page", HOME_PAGE, ("debian/control", "packaging/org.ble_kovra.BLEKovra.metainfo.xml")))


def constants(root):
    """Returns the support address and the home page; None for one that is not found."""
    header, build = ((root / name).read_text(encoding="utf-8") for name in (SUPPORT, "CMakeLists.txt"))
    address = re.search(r'supportAddress = "([^"]+)"', header)
    page = re.search(r'^project\([^)]*\bHOMEPAGE_URL "([^"]+)"', build, re.M)
    return (address and address[1], page and page[1])


def texts(root, *folders):
    """Yields the path and the text of each file in these folders."""
    for folder in folders:
        for path in sorted((root / folder).rglob("*")):
            if path.is_file() and "__pycache__" not in path.parts:
                yield str(path.relative_to(root)), path.read_text(encoding="utf-8", errors="replace")


def wrong_addresses(root):
    for (what, pattern, files), wanted in zip(NAMED, constants(root)):
        if wanted is None:
            yield f"the constant of the {what} is missing"
            continue
        naming = set()
        for path, text in texts(root, "debian", "packaging"):
            for match in pattern.finditer(text):
                naming.add(path)
                found = next((group for group in match.groups() if group is not None), match[0])
                if found != wanted:
                    yield f"{path}: the {what} is {wanted}, not {found}"
        yield from (f"{path}: the {what} {wanted} is missing" for path in files if path not in naming)
        for path, text in texts(root, "BLE_kovra", "helper"):
            if wanted in text and path != SUPPORT:
                yield f"{path}: repeats the {what} instead of using the constant"


if __name__ == "__main__":
    top = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2]
    found = list(wrong_addresses(top))
    print("\n".join(found) or "the packages have the project's support address and home page")
    sys.exit(1 if found else 0)
