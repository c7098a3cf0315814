"""Scenarios of cmake --install, which every packaging uses. They install what was built for the Debian packages."""

import os
import re
import shutil
import stat

from built import NAMES
from contents import APPLICATION, DOCUMENTS, HELPER
from scenario import run, scenario
from waiting import check

UNIT = "/usr/lib/systemd/system/ble-kovra-helper.service"
WANTED = {"ble-kovra": APPLICATION, "ble-kovra-helper": HELPER | {UNIT}}


def without_compression(paths):
    """CMake installs the manual pages as they are; each packaging compresses them."""
    return {path.removesuffix(".gz") for path in paths - DOCUMENTS}


def install(build, place, *options):
    """Installs below a folder, as the packagings do, and returns the absolute paths of the files there."""
    run("cmake", "--install", build, *options, env={**os.environ, "DESTDIR": str(place)})
    return {"/" + str(path.relative_to(place)) for path in place.rglob("*") if not path.is_dir()}


@scenario("cmake --install puts each file of the application and the helper where the system looks for it.")
def destdir(built):
    place = built.folder / "destdir"
    found = install(built.build, place)
    wanted = without_compression(WANTED["ble-kovra"] | WANTED["ble-kovra-helper"])
    check(found == wanted, f"lacking: {wanted - found}, too many: {found - wanted}")
    for path in found:
        is_program = path.startswith(("/usr/bin/", "/usr/libexec/"))
        mode = stat.S_IMODE((place / path[1:]).stat().st_mode)
        check(mode == (0o755 if is_program else 0o644), f"{path} has mode {mode:o}")


@scenario("The installed unit, rule and programs name only installed programs.")
def named_programs(built):
    place = built.folder / "named"
    found = install(built.build, place)
    for path in without_compression(HELPER | {UNIT}) - {"/usr/libexec/ble-kovra-helper"}:
        if path.startswith("/usr/share/man/"):
            continue
        named = set(re.findall(r"/usr/libexec/[\w/-]*\w", (place / path[1:]).read_text()))
        check(named <= found, f"{path} names {named - found}")
    unit = (place / UNIT[1:]).read_text()
    check("\nExecStart=/usr/libexec/ble-kovra-helper\n" in unit, "the unit starts another program")


@scenario("The components of cmake --install are the packages, and the helper can be left out of the build.")
def components(built):
    for name in NAMES:
        found = install(built.build, built.folder / f"component-{name}", "--component", name)
        wanted = without_compression(WANTED[name])
        check(found == wanted, f"{name} lacks {wanted - found} and brings {found - wanted}")
    # What is built without the helper differs only in what is left out, so the programs need not be compiled again.
    build = built.folder / "without-helper"
    run("cmake", "-G", "Ninja", "-S", built.packages / "source", "-B", build, "-DKOVRA_HELPER=OFF",
        "-DBUILD_TESTING=OFF", "-DCMAKE_INSTALL_PREFIX=/usr")
    targets = run("ninja", "-C", build, "-t", "targets", "all")
    check("ble-kovra-ui:" in targets and "ble-kovra-helper" not in targets, "the build has the helper's targets")
    for name in ("ble-kovra", "ble-kovractl", "ble-kovra-ui"):
        shutil.copy(built.build / name, build)
    shutil.copytree(built.build / "icons", build / "icons")
    found = install(build, built.folder / "without-helper-installed")
    # Only Debian's zsh looks for completions in a folder of its own.
    wanted = {path.replace("/vendor-completions/", "/site-functions/") for path in without_compression(APPLICATION)}
    check(found == wanted, f"lacking: {wanted - found}, too many: {found - wanted}")
