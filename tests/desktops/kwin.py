"""KWin, the window manager of Plasma: events of a mouse and a keyboard, scripts, and pictures."""

import os
import struct

from gi.repository import Gio, GLib
from PIL import Image

from item import Caller
from waiting import wait_for
from wayland import WaylandClient

NAME = "org.kde.KWin"
SCREENSHOT = ("/org/kde/KWin/ScreenShot2", "org.kde.KWin.ScreenShot2")
SCRIPT = "tmp/kovra.js"
REPORT = Gio.DBusNodeInfo.new_for_xml("""<node><interface name="org.kovra.Test">
<method name="Report"><arg type="s" direction="in"/></method></interface></node>""").interfaces[0]
# Of QImage's formats those that KWin uses, as PIL names them.
FORMATS = {4: "BGRX", 5: "BGRA", 6: "BGRA", 16: "RGBX", 17: "RGBA", 18: "RGBA"}
BUTTONS = {1: 0x110, 3: 0x111, 2: 0x112}  # the kernel's BTN_LEFT, BTN_RIGHT and BTN_MIDDLE


class FakeInput(WaylandClient):
    """Sends the events of a mouse and a keyboard, through the protocol org_kde_kwin_fake_input."""

    def __init__(self, session):
        # KWin offers this only to programs whose files it can see.
        connection, self._keeper = session.container.connected(f"{session.RUNTIME}/wayland-0", session.PERSON_ID)
        super().__init__(connection, "org_kde_kwin_fake_input", 4)
        self.send(self.GLOBAL, 0, self.text("tests") + self.text("tests"))

    def close(self):
        super().close()
        self._keeper.close()

    def point(self, x, y):
        self.send(self.GLOBAL, 9, struct.pack("ii", round(x * 256), round(y * 256)))

    def button(self, button, is_pressed):
        self.send(self.GLOBAL, 2, struct.pack("II", BUTTONS[button], is_pressed))

    def key(self, code, is_pressed):
        self.send(self.GLOBAL, 10, struct.pack("II", code, is_pressed))


class Scripts:
    """Runs scripts in KWin, which send one text each to this process."""

    def __init__(self, session):
        self._session, self._reports = session, []
        session.bus.register_object("/kovra", REPORT, self._reported, None, None)

    def run(self, text):
        """Loads a script into KWin. Returns what it sends to this process."""
        bus = Caller(self._session.bus)
        (self._session.files / SCRIPT).write_text(text % self._session.bus.get_unique_name())
        self._reports.clear()
        number = bus.call(NAME, "/Scripting", "org.kde.kwin.Scripting", "loadScript",
                          GLib.Variant("(ss)", (f"/{SCRIPT}", "kovra")))[0]
        script = f"/{number}" if self._session.desktop.release == "bookworm" else f"/Scripting/Script{number}"
        bus.call(NAME, script, "org.kde.kwin.Script", "run")
        wait_for(self._report, "the report of a script in KWin", 20)
        bus.call(NAME, "/Scripting", "org.kde.kwin.Scripting", "unloadScript", GLib.Variant("(s)", ("kovra",)))
        return self._reports[-1]

    def _report(self):
        while GLib.MainContext.default().iteration(False):
            pass
        return self._reports

    def _reported(self, _bus, _sender, _path, _interface, _method, arguments, invocation):
        self._reports.append(arguments.unpack()[0])
        invocation.return_value(None)


def picture(session, screen):
    """Returns a picture of a screen, or None: while the screens change, KWin cancels pictures."""
    reading, writing = os.pipe()
    with os.fdopen(reading, "rb") as stream:
        try:
            # The list closes its descriptors when it is no longer referenced. The picture ends when all are closed.
            answer, _ = session.bus.call_with_unix_fd_list_sync(
                NAME, *SCREENSHOT, "CaptureScreen", GLib.Variant("(sa{sv}h)", (
                    screen, {"native-resolution": GLib.Variant("b", True)}, 0)), None, 0, 60_000,
                Gio.UnixFDList.new_from_array([os.dup(writing)]))
        except GLib.Error:
            return None
        finally:
            os.close(writing)
        facts = answer.unpack()[0]
        data = stream.read()
    size = facts["width"], facts["height"]
    return Image.frombytes("RGB" if FORMATS[facts["format"]].endswith("X") else "RGBA", size, data, "raw",
                           FORMATS[facts["format"]], facts["stride"]).convert("RGB")
