"""An X client that takes pictures of the screen, and simulates a mouse and a keyboard."""

import contextlib

from PIL import Image
from Xlib import X, XK, display
from Xlib.error import BadDrawable, BadWindow
from Xlib.ext import xtest


class X11Screen:
    def __init__(self, name):
        self._display = display.Display(name)
        self._root = self._display.screen().root
        self.size = (self._root.get_geometry().width, self._root.get_geometry().height)
        # No panel has this color, so a panel always differs from the empty screen.
        self._root.change_attributes(background_pixel=0x607080)
        self._root.clear_area()
        self._display.sync()

    def picture(self):
        """Returns a picture of the whole screen, without the pointer."""
        width, height = self.size
        data = self._root.get_image(0, 0, width, height, X.ZPixmap, 0xFFFFFFFF).data
        return Image.frombytes("RGB", self.size, data, "raw", "BGRX")

    def point(self, x, y):
        xtest.fake_input(self._display, X.MotionNotify, x=int(x), y=int(y))
        self._display.sync()

    def click(self, x, y, button=1):
        """Clicks with a mouse button: 1 is the left one, 3 the right one."""
        self.point(x, y)
        for event in (X.ButtonPress, X.ButtonRelease):
            xtest.fake_input(self._display, event, button)
        self._display.sync()

    def press(self, *names):
        """Presses the keys with these keysym names, and then releases them in reverse order."""
        codes = [self._display.keysym_to_keycode(XK.string_to_keysym(name)) for name in names]
        for is_pressed, order in ((True, codes), (False, reversed(codes))):
            for code in order:
                self.key(code, is_pressed)

    def key(self, code, is_pressed):
        """Presses or releases the key that has this number on the server."""
        xtest.fake_input(self._display, X.KeyPress if is_pressed else X.KeyRelease, code)
        self._display.sync()

    @contextlib.contextmanager
    def holding(self, name, modifiers):
        """Holds the key with this keysym name and these modifiers, as another program does that uses it."""
        key = self._display.keysym_to_keycode(XK.string_to_keysym(name))
        self._root.grab_key(key, modifiers, False, X.GrabModeAsync, X.GrabModeAsync)
        self._display.sync()
        try:
            yield
        finally:
            self._root.ungrab_key(key, modifiers)
            self._display.sync()

    def window(self, title):
        """Returns (left, top, right, bottom) of a visible window with this title, or None."""
        return next(iter(self.windows(title)), None)

    def windows(self, title):
        """Returns the places of all visible windows with this title, like window()."""
        found, waiting = [], [self._root]
        while waiting:
            # A window may be destroyed at any time.
            with contextlib.suppress(BadWindow, BadDrawable):
                window = waiting.pop()
                name = window.get_full_text_property(self._display.intern_atom("_NET_WM_NAME"))
                if name == title and window.get_attributes().map_state == X.IsViewable:
                    size, corner = window.get_geometry(), window.translate_coords(self._root, 0, 0)
                    found.append((-corner.x, -corner.y, -corner.x + size.width, -corner.y + size.height))
                waiting += window.query_tree().children
        return found

    def has_keyboard(self, title):
        """Returns whether the keyboard focus is in a window with this title."""
        focus = self._display.get_input_focus().focus
        name = self._display.intern_atom("_NET_WM_NAME")
        with contextlib.suppress(BadWindow):  # the window with the focus may have been destroyed
            return focus not in (X.NONE, X.PointerRoot) and focus.get_full_text_property(name) == title
        return False

    def has_tray(self):
        """Returns whether an XEmbed tray is running, that is, whether its selection has an owner."""
        selection = self._display.intern_atom("_NET_SYSTEM_TRAY_S0")
        return self._display.get_selection_owner(selection) != X.NONE

    def close(self):
        self._display.close()
