"""Runs an X server (Xvfb) for one scenario, simulates key presses, and finds the program's windows."""

import contextlib
import functools
import os
import signal
import subprocess

from waiting import repeat, wait_for

# X keycodes of a PC keyboard.
CONTROL, ALT, T = 37, 64, 28
ESCAPE, TAB, SPACE, RETURN = 9, 23, 65, 36

SETTINGS = (440, 480)


class Screen:
    def __init__(self):
        read, write = os.pipe()
        command = ["Xvfb", "-displayfd", str(write), "-screen", "0", "1024x768x24", "-dpi", "96", "-nolisten", "tcp",
                   "-noreset"]
        self._server = subprocess.Popen(command, pass_fds=[write], stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as number:
            self.name = f":{number.readline().strip()}"

    def press(self, *keys):
        """Presses the keys in this order, and then releases them in reverse order."""
        from Xlib import X
        from Xlib.ext import xtest
        for key in keys:
            xtest.fake_input(self._connection, X.KeyPress, key)
        for key in reversed(keys):
            xtest.fake_input(self._connection, X.KeyRelease, key)
        self._connection.sync()

    def press_hot_key(self):
        self.press(CONTROL, ALT, T)

    def windows(self):
        """Returns the sizes of the program's visible windows in pixels. No window manager adds frames to them."""
        from Xlib import X, error
        seen = []
        for window in self._connection.screen().root.query_tree().children:
            with contextlib.suppress(error.BadWindow, error.BadDrawable):
                if window.get_attributes().map_state == X.IsViewable and window.get_wm_name() == "BLE-kovra":
                    size = window.get_geometry()
                    seen.append((size.width, size.height))
        return seen

    def shows_settings(self):
        return SETTINGS in self.windows()

    def alerts(self):
        return [size for size in self.windows() if size != SETTINGS]

    def wait_alerts(self, count):
        wait_for(lambda: len(self.alerts()) == count, f"{count} alerts to be on the screen")

    def wait_keyboard(self):
        wait_for(self._focused, "a window to have the keyboard focus")

    def wait_keyboard_of_alert(self):
        wait_for(lambda: self._focused() not in [None, SETTINGS], "an alert to have the keyboard focus")

    def _focused(self):
        """Returns the size of the window with the keyboard focus, or None."""
        from Xlib import X, error
        focus = self._connection.get_input_focus().focus
        if focus in (X.NONE, X.PointerRoot):
            return None
        with contextlib.suppress(error.BadWindow, error.BadDrawable):
            root = self._connection.screen().root
            while (parent := focus.query_tree().parent) != root:
                focus = parent
            size = focus.get_geometry()
            return size.width, size.height
        return None

    def answer_alert(self, key):
        """Answers the only alert with this key. A new alert ignores keys for a moment, so the key is pressed again."""
        self.wait_keyboard_of_alert()
        repeat(lambda: self.press(key), lambda: not self.alerts(), "the alert to close", limit=90, patience=2)

    def hang(self):
        self._server.send_signal(signal.SIGSTOP)

    def close(self):
        self._server.send_signal(signal.SIGCONT)
        # The server may miss a signal that arrives just before it waits for its clients.
        while self._server.poll() is None:
            self._server.terminate()
            with contextlib.suppress(subprocess.TimeoutExpired):
                self._server.wait(1)

    @functools.cached_property
    def _connection(self):
        from Xlib import display
        return display.Display(self.name)
