"""Builds an older version of the helper's package, in which the helper runs as root.

The package is the current one with the older unit and tmpfiles.d file. It lacks the user account, the udev rule, and
the part of postinst for them. The program is the current one.
"""

import pathlib
import re
import subprocess

FILES = pathlib.Path(__file__).resolve().with_name("helper_of_root")
TMPFILES = "usr/lib/tmpfiles.d/ble-kovra-helper.conf"
LATER = ["usr/lib/sysusers.d/ble-kovra-helper.conf", "usr/lib/udev/rules.d/90-ble-kovra-helper.rules"]
PLACE = pathlib.Path("/run/kovra-older")


def helper_of_root(package):
    """Returns the path of the older package. The first call builds it from `package`, the current one."""
    result = PLACE.with_suffix(".deb")
    if result.exists():
        return str(result)
    subprocess.run(["dpkg-deb", "--raw-extract", package, PLACE], check=True)
    unit = next(PLACE.glob("**/systemd/system/ble-kovra-helper.service"))
    for path in [unit, PLACE / TMPFILES]:
        path.write_text((FILES / path.name).read_text())
    for path in LATER:
        (PLACE / path).unlink(missing_ok=True)
    control = PLACE / "DEBIAN/control"
    control.write_text(re.sub(r"^Version: .*$", "Version: 0.0.9", control.read_text(), flags=re.M))
    script = PLACE / "DEBIAN/postinst"
    text = script.read_text()
    script.write_text("#!/bin/sh\nset -e\n" + text[text.index("# Automatically added"):])
    subprocess.run(["dpkg-deb", "-Znone", "--build", PLACE, result], check=True)
    return str(result)
