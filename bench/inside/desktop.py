#!/usr/bin/python3
"""Runs a command on a private desktop: an X server, two empty buses and private folders.

The desktop also has the flag's folder, and a driver that counts as active, so that no alert appears. This script uses
no modules outside this project and Python's standard library. Such modules would load libraries that the measured
programs use, too, and sharing libraries would lower the programs' PSS.
"""

import os
import pathlib
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path += [str(ROOT / "tests/hosts"), str(ROOT / "tests/system/guest")]

import secluded

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:path={address}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/>
  </policy>
</busconfig>
"""


def main():
    secluded.adopt_orphans()
    with tempfile.TemporaryDirectory(prefix="kovra-bench-") as folder:
        try:
            secluded.seclude()
            return subprocess.run(sys.argv[1:], env=environment(pathlib.Path(folder))).returncode
        except secluded.NotSecluded as reason:
            sys.exit(f"desktop: {reason}")
        finally:
            secluded.end_descendants()


def environment(folder):
    """Starts the display and the buses; returns the environment for programs on the desktop."""
    home, runtime = folder / "home", folder / "run"
    for made in (home, runtime):
        made.mkdir(mode=0o700)
    own = {"PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "LANG": "C.UTF-8", "USER": "root",
           "HOME": str(home), "XDG_RUNTIME_DIR": str(runtime), "DISPLAY": display()}
    for kind in ("session", "system"):
        own[f"DBUS_{kind.upper()}_BUS_ADDRESS"] = bus(folder / kind)
    return own


def display():
    reading, writing = os.pipe()
    start("Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-noreset",
          pass_fds=[writing])
    os.close(writing)
    with os.fdopen(reading) as number:
        return ":" + number.readline().strip()


def bus(address):
    configuration = address.with_suffix(".conf")
    configuration.write_text(BUS_CONFIGURATION.format(address=address))
    daemon = start("dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile", "--print-address",
                   stdout=subprocess.PIPE)
    return daemon.stdout.readline().decode().strip()


def start(*command, stdout=subprocess.DEVNULL, **options):
    return subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.DEVNULL, **options)


if __name__ == "__main__":
    sys.exit(main())
