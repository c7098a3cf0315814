"""The desktops: releases, the packages of each desktop, and the settings with which it runs without a screen."""

import dataclasses

import gnome
import on_x
import plasma
from roots import Layer

PERSON, PERSON_ID = "anna", 1000
WIDTH, HEIGHT = 1280, 800

COMMON_PACKAGES = (
    "systemd-sysv", "libpam-systemd", "dbus", "dbus-user-session", "udev", "polkitd", "pkexec", "at-spi2-core",
    "xdg-desktop-portal", "xdg-desktop-portal-gtk", "xdg-utils", "xwayland", "xvfb", "xauth", "libgl1-mesa-dri",
    "libegl1", "libgles2", "fonts-dejavu-core", "fonts-cantarell", "hicolor-icon-theme", "adwaita-icon-theme",
    "locales",
    "libumockdev0", "zenity", "procps", "libcap2-bin", "python3-minimal",
    # What the packages of the program recommend.
    "libcanberra0", "qt6-gtk-platformtheme", "qt6-wayland", "qt6-qpa-plugins")

# What the tests need, and the loader of SVG icons, which GTK recommends.
TOOLS = ("umockdev", "librsvg2-common")

# Everybody who is in the container may log in, by the login manager's rules.
PAM = """auth sufficient pam_permit.so
account sufficient pam_permit.so
session required pam_systemd.so
"""
COMMON_FILES = {
    "/etc/pam.d/kovra-session": PAM,
    "/etc/pam.d/systemd-user": PAM,
    "/etc/machine-id": "6b6f7672610000000000000000000001\n",
    "/etc/hostname": "box\n",
    "/etc/systemd/journald.conf.d/kovra.conf": "[Journal]\nStorage=volatile\nRateLimitIntervalSec=0\n",
}
# Services that wait for devices or the network, or work for a whole system.
MASKED = ("apt-daily.timer", "apt-daily-upgrade.timer", "dpkg-db-backup.timer", "e2scrub_all.timer", "fstrim.timer",
          "systemd-networkd.service", "systemd-resolved.service", "systemd-timesyncd.service",
          "systemd-logind-varlink.socket",
          "getty@tty1.service", "console-getty.service", "systemd-ask-password-console.path", "upower.service",
          "packagekit.service", "gdm.service", "sddm.service", "display-manager.service")

COMMON = Layer("common", COMMON_PACKAGES, files=COMMON_FILES, commands=(
    ("useradd", "--create-home", "--shell", "/bin/bash", "--uid", str(PERSON_ID), PERSON),
    ("systemctl", "mask", *MASKED),
))

UNIT = """[Unit]
Description=the session of {person} on {display}
After=systemd-user-sessions.service dbus.service systemd-logind.service {display_unit}
Requires={display_unit}

[Service]
User={person}
PAMName=kovra-session
WorkingDirectory=~
{environment}
ExecStart={command}
"""
DISPLAY_UNIT = f"""[Unit]
Description=a display without a screen

[Service]
User={PERSON}
ExecStart=/usr/bin/Xvfb :0 -screen 0 {WIDTH}x{HEIGHT}x24 -dpi 96 -nolisten tcp -noreset
ExecStartPost=/bin/sh -c 'until [ -S /tmp/.X11-unix/X0 ]; do sleep 0.1; done'
"""


@dataclasses.dataclass(frozen=True)
class Desktop:
    name: str
    release: str
    # What users call the release and the desktop, with its version.
    title: str
    # One of the modules gnome and plasma.
    kind: object
    is_wayland: bool = True
    packages: tuple = ()
    # Files besides those of the kind. They are the same for all desktops of this kind and release.
    files: dict = dataclasses.field(default_factory=dict)
    # The class of the driver, if it is not that of the kind.
    driver: type = None
    # The title of the window in which the desktop asks for the hot key, if it does.
    asks_for_key: str = ""
    # When the desktop assigns the hot key without asking: at the first "start" of the program, or at its "request", as
    # the settings open; empty if it asks, or has no hot keys.
    assigns_key: str = ""

    @property
    def shown(self):
        """What users call the desktop, with its version."""
        return self.title.split(", ")[1]

    @property
    def session_unit(self):
        return f"kovra-session-{'wayland' if self.is_wayland else 'x11'}.service"

    @property
    def shell_class(self):
        """The class of the driver."""
        return self.driver or self.kind.SHELL_CLASS

    def layers(self, archives):
        """Returns the layers of the root above its base. Desktops of one kind and release share them."""
        packages = Layer(self.kind.NAME, (*self.kind.PACKAGES, *self.packages))
        settings = Layer(f"{self.kind.NAME}-settings", TOOLS, commands=self.kind.COMMANDS,
                         files={**self.kind.FILES, **self.files, **_units(self.kind)})
        return [COMMON, packages, settings, Layer(f"{self.kind.NAME}-ours", archives=tuple(sorted(archives)))]


def _units(kind):
    files = {"/etc/systemd/system/kovra-display.service": DISPLAY_UNIT}
    for display, command in kind.SESSIONS.items():
        own = {"XDG_SEAT": "seat0", "XDG_SESSION_CLASS": "user", "XDG_SESSION_TYPE": display, "LANG": "C.UTF-8",
               "LIBGL_ALWAYS_SOFTWARE": "1", **kind.ENVIRONMENT}
        if display == "x11":
            own["DISPLAY"] = ":0"
        files[f"/etc/systemd/system/kovra-session-{display}.service"] = UNIT.format(
            person=PERSON, display=display, command=command,
            display_unit="kovra-display.service" if display == "x11" else "dbus.service",
            environment="\n".join(f"Environment={name}={value}" for name, value in own.items()))
    return files


DESKTOPS = [
    Desktop("gnome-43", "bookworm", "Debian 12, GNOME 43, Wayland", gnome),
    Desktop("plasma-5.27", "bookworm", "Debian 12, Plasma 5.27, Wayland", plasma,
            packages=("plasma-workspace-wayland",), assigns_key="start"),
    Desktop("gnome-48", "trixie", "Debian 13, GNOME 48, Wayland", gnome, asks_for_key="Add Keyboard Shortcuts"),
    Desktop("plasma-6.3", "trixie", "Debian 13, Plasma 6.3, Wayland", plasma, files=plasma.IN_A_WINDOW,
            driver=on_x.PlasmaOnX, assigns_key="request"),
    Desktop("gnome-43-x11", "bookworm", "Debian 12, GNOME 43, X11", gnome, is_wayland=False, driver=on_x.GnomeOnX),
    Desktop("plasma-5.27-x11", "bookworm", "Debian 12, Plasma 5.27, X11", plasma, is_wayland=False,
            packages=("plasma-workspace-wayland",), driver=on_x.PlasmaOnX),
    Desktop("gnome-48-x11", "trixie", "Debian 13, GNOME 48, X11", gnome, is_wayland=False, driver=on_x.GnomeOnX),
    Desktop("plasma-6.3-x11", "trixie", "Debian 13, Plasma 6.3, X11", plasma, is_wayland=False,
            files=plasma.IN_A_WINDOW, driver=on_x.PlasmaOnX),
]
