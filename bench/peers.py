"""Other tray programs of Debian, in several languages and toolkits.

They are installed into an overlay of the machine's root, which keeps its changes in the build folder.
"""

import hashlib
import pathlib
import shutil
import subprocess

from figures import say
from private import LAYER, CannotRun, need_root

FOLDER = pathlib.Path(__file__).resolve().parents[1] / "build" / "peers"
COMMANDS = {
    "parcellite": ["parcellite"],
    "cbatticon": ["cbatticon"],
    "volumeicon": ["volumeicon"],
    "pnmixer": ["pnmixer"],
    "nm-applet": ["nm-applet"],
    "nm-applet-indicator": ["nm-applet", "--indicator"],
    "pasystray": ["pasystray"],
    "gxkb": ["gxkb"],
    "qlipper": ["qlipper"],
    "flameshot": ["flameshot"],
    "copyq": ["copyq"],
    "kteatime": ["kteatime"],
    "kmix": ["kmix", "--keepvisibility"],
    "solaar": ["solaar", "--window=hide"],
    "udiskie": ["udiskie", "--tray"],
    "blueman": ["blueman-applet"],
}
PACKAGES = [
    "parcellite", "cbatticon", "volumeicon-alsa", "pnmixer", "network-manager-gnome", "pasystray", "gxkb", "qlipper",
    "flameshot", "copyq", "kteatime", "kmix", "solaar", "udiskie", "blueman", "gir1.2-ayatanaappindicator3-0.1",
    # These packages simulate the services without which some programs show no icon.
    "python3-dbusmock", "libglib2.0-bin",
]


def prepare():
    """Returns the folder of the overlay. The overlay is installed again when the packages of the machine have changed."""
    need_root()
    stamp, state = FOLDER / "machine", hashlib.sha256(pathlib.Path("/var/lib/dpkg/status").read_bytes()).hexdigest()
    if not stamp.exists() or stamp.read_text() != state:
        shutil.rmtree(FOLDER, ignore_errors=True)
        _install()
        stamp.write_text(state)
    return FOLDER


def _install():
    # Forbid the packages to start services. Their scripts would use the service manager of the machine.
    policy = FOLDER / "changes" / "usr" / "sbin" / "policy-rc.d"
    policy.parent.mkdir(parents=True)
    policy.write_text("#!/bin/sh\nexit 101\n")
    policy.chmod(0o755)
    say("refreshing apt's lists")
    _apt("update")
    say("installing the other tray programs below the build folder (some minutes)")
    _apt("install", "-y", "--no-install-recommends", *PACKAGES)
    _apt("clean")


def _apt(*words):
    done = subprocess.run([LAYER, FOLDER, "env", "DEBIAN_FRONTEND=noninteractive", "apt-get", "-q", *words],
                          capture_output=True, text=True)
    if done.returncode != 0:
        last = (done.stderr.strip() or done.stdout.strip()).splitlines()[-3:]
        raise CannotRun(f"apt-get {words[0]} failed: {' '.join(last)}")
