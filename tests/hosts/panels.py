"""The panels of other projects that the status item is tested with. Each contains only a tray."""

import pathlib

from desktop import SwayDesktop, X11Desktop
from item import WATCHER, Caller
from waiting import check, wait_for

PORTAL = "org.freedesktop.portal.Desktop"
PORTAL_PROGRAM = pathlib.Path(__file__).with_name("portal.py")


class Panel:
    name = ""
    # The value of XDG_CURRENT_DESKTOP, and the name of the comma key in shortcuts on that desktop.
    session = ""
    comma = "comma"
    height = 30
    takes_items = True
    # The scales at which the icon is tested, in pixels per point.
    scales = (1, 2)
    # Whether the desktop has a portal with the preferred color scheme. Without it, nothing on the desktop says whether
    # a panel is light or dark that does not announce its color and is not LXQt's.
    has_portal = False
    # What the names of icons end in that are made for light panels, and for dark ones.
    looks = ()

    def __init__(self, folder, dark=False, scale=1):
        self.dark, self.scale = dark, scale
        self.desktop = self._open_desktop(folder)
        self._process = None
        if self.has_portal:
            self.start_portal()

    def start(self):
        """Starts the panel, and waits until it can show the program's icon."""
        self.configure()
        self._process = self.desktop.start(self.name, *self.command())

        def ready():
            check(self._process.is_running(), f"{self.name} ended: {self._process.last_words()}")
            return self.is_ready()
        wait_for(ready, f"{self.name} to be a host")

    def start_portal(self):
        scheme = "dark" if self.dark else "light"
        self._portal = self.desktop.start("portal", "/usr/bin/python3", "-B", PORTAL_PROGRAM, scheme)
        wait_for(lambda: Caller(self.desktop.bus).has_owner(PORTAL), "the portal")

    def restart_portal(self):
        self._portal.kill()
        wait_for(lambda: not Caller(self.desktop.bus).has_owner(PORTAL), "the portal to leave the bus")
        self.start_portal()

    def kill(self):
        self._process.kill()
        wait_for(lambda: not self.is_present(), "the host to disappear with its panel")

    def is_present(self):
        return Caller(self.desktop.bus).has_owner(WATCHER)

    def is_ready(self):
        return self.is_present() and Caller(self.desktop.bus).property(
            WATCHER, "/StatusNotifierWatcher", WATCHER, "IsStatusNotifierHostRegistered")

    def command(self):
        return [self.name]

    def configure(self):
        pass

    def _open_desktop(self, folder):
        return X11Desktop(folder, XDG_CURRENT_DESKTOP=self.session)


class GtkPanel(Panel):
    def _open_desktop(self, folder):
        return X11Desktop(folder, XDG_CURRENT_DESKTOP=self.session, GDK_SCALE=str(self.scale))

    def configure(self):
        self.desktop.configure("gtk-3.0/settings.ini", f"""[Settings]
gtk-theme-name=Adwaita
gtk-icon-theme-name=Adwaita
gtk-font-name=DejaVu Sans 10
gtk-application-prefer-dark-theme={int(self.dark)}
""")


class XfcePanel(GtkPanel):
    name = "xfce4-panel"
    session = "XFCE"
    looks = ("-symbolic", "-symbolic")

    def command(self):
        return [self.name, "--disable-wm-check", "--sm-client-disable"]

    def configure(self):
        super().configure()
        file = "xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml"
        self.desktop.configure(file, f"""<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="{str(self.dark).lower()}"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="{self.height}"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
""")


class MatePanel(GtkPanel):
    name = "mate-panel"
    looks = ("-on-light-symbolic", "-on-dark-symbolic")
    session = "MATE"
    height = 28

    def configure(self):
        super().configure()
        self.desktop.configure("glib-2.0/settings/keyfile", f"""[org/mate/panel/general]
toplevel-id-list=['top']
object-id-list=['tray']

[org/mate/panel/toplevels/top]
orientation='top'
expand=true
size={self.height}

[org/mate/panel/objects/tray]
applet-iid='NotificationAreaAppletFactory::NotificationArea'
object-type='applet'
toplevel-id='top'
position=0
panel-right-stick=true
""")


class LxqtPanel(Panel):
    name = "lxqt-panel"
    looks = ("-on-light-symbolic", "-on-dark-symbolic")
    session = "LXQt"
    comma = ","
    height = 32
    scales = (1, 1.5, 2)

    def _open_desktop(self, folder):
        return X11Desktop(folder, XDG_CURRENT_DESKTOP=self.session, QT_SCALE_FACTOR=str(self.scale))

    def configure(self):
        self.desktop.configure("lxqt/lxqt.conf", f"[General]\ntheme={'dark' if self.dark else 'light'}\n"
                                                 "icon_theme=Adwaita\n")
        self.desktop.configure("lxqt/panel.conf", f"""panels=panel1

[panel1]
plugins=statusnotifier
position=Top
desktop=0
panelSize={self.height}
iconSize=22

[statusnotifier]
type=statusnotifier
alignment=Right
""")


class Waybar(Panel):
    name = "waybar"
    session = "sway"
    has_portal = True
    looks = ("-outlined-dark", "-outlined-light")
    scales = (1, 1.5, 2)

    def _open_desktop(self, folder):
        return SwayDesktop(folder, self.scale, XDG_CURRENT_DESKTOP=self.session)

    def configure(self):
        self.desktop.configure("waybar/config", f"""{{"layer": "top", "position": "top",
 "height": {self.height}, "modules-right": ["tray"], "tray": {{"icon-size": 22, "spacing": 8}}}}
""")
        paper, ink = ("#202020", "#ffffff") if self.dark else ("#f0f0f0", "#000000")
        self.desktop.configure("waybar/style.css", f"""* {{ font-family: "DejaVu Sans"; font-size: 13px; }}
window#waybar {{ background: {paper}; color: {ink}; }}
""")


class Trayer(Panel):
    """A tray that shows no StatusNotifier items. It embeds the windows of icons (XEmbed)."""

    name = "trayer"
    takes_items = False
    scales = (1,)

    def command(self):
        paper = "0x202020" if self.dark else "0xf0f0f0"
        return [self.name, "--edge", "top", "--widthtype", "percent", "--width", "100", "--expand", "false",
                "--heighttype", "pixel", "--height", self.height, "--SetDockType", "true",
                "--transparent", "true", "--alpha", "0", "--tint", paper]

    def is_present(self):
        return self.desktop.screen.has_tray()

    is_ready = is_present


class WaybarWithoutPortal(Waybar):
    has_portal = False
    looks = ("-outlined-light", "-outlined-light")


PANELS = [XfcePanel, LxqtPanel, MatePanel, Waybar, Trayer]
