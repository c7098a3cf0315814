"""What the drivers of the desktops have in common."""

import dataclasses

from waiting import wait_for

# The kernel's numbers of keys.
KEYS = {"Escape": 1, "Tab": 15, "Return": 28, "Control": 29, "Shift": 42, "Alt": 56, "space": 57, "F2": 60, "F4": 62,
        "Up": 103, "Down": 108, "Super": 125}
for _first, _row in ((2, "1234567890-="), (16, "qwertyuiop[]"), (30, "asdfghjkl;'"), (44, "zxcvbnm,./")):
    KEYS |= {letter: _first + place for place, letter in enumerate(_row)}
KEYS[" "] = KEYS["space"]


@dataclasses.dataclass
class Window:
    title: str
    # What the desktop takes the window for: the name of its entry among the programs.
    app: str
    # left, top, right, bottom
    box: list
    has_keyboard: bool
    asks_for_attention: bool
    pid: int
    # False while it is minimized.
    is_shown: bool = True


@dataclasses.dataclass
class Entry:
    """An entry of an open menu."""
    title: str
    is_checked: bool
    box: list


class Shell:
    """A running desktop, as a person sees and uses it. `session` is the Session that it belongs to.

    Places are in the desktop's units. A picture has more pixels if the screen is scaled.
    """

    # The size of the screen at scale 1.
    WIDTH, HEIGHT = 1280, 800
    CAN_SCALE = True
    THICKEST_PANEL = 60
    # What the desktop logs about the program for a reason of its own: a part of the line, and what users are told.
    OWN_COMPLAINTS = dict.fromkeys(
        ("Failed to add PIDs to scope", ".scope: Failed with result 'resources'", ".scope - BLE-kovra"),
        "systemd logs it when a second start has ended before the desktop moves it into a group of its own")

    def __init__(self, session):
        self.session = session
        self.scale = 1

    def pixels(self, picture, box):
        """Returns the part of the picture that the box covers, in pixels of the picture."""
        return [round(one * self.scale * picture.width / self.WIDTH) for one in box]

    def icon_in(self, picture):
        """Returns the box of the icon in the picture, in pixels."""
        return self.pixels(picture, self.icon())

    def paper(self, picture, window):
        """Returns the color of the window's paper, which is gray, or None if the picture does not show it yet."""
        left, top, right, bottom = self.pixels(picture, window.box)
        inset, middle = round(8 * self.scale), (top + bottom) // 2
        color = picture.getpixel((left + inset, middle))
        is_gray = max(color) - min(color) < 20
        return color if is_gray and color == picture.getpixel((right - inset, middle)) else None

    def settle(self):
        """Called once when the desktop is ready."""

    def close(self):
        """Ends what runs in the container for the driver. Called before the session or the container ends."""

    def marks_starts(self):
        """Returns whether the pointer shows that a program is starting."""
        return True

    # Why the pointer stays busy for up to 6 s after the icon has appeared, for users; empty if it does not.
    stays_busy = ""

    # Why the desktop cannot lock the screen here, for users; empty if it can.
    cannot_lock = ""

    # How much the desktop can prevent new windows from taking the keyboard; empty if it cannot.
    focus_levels = ()

    @property
    def focus_remark(self):
        """Says to users which windows take the keyboard."""
        if not self.session.desktop.is_wayland:
            return "on X11 the alert and the settings take the keyboard"
        return f"{self.session.desktop.shown} gives the keyboard to each new window on Wayland"

    def expect_menu(self):
        """Called before the menu is opened."""

    def choose_first_entry(self):
        """Chooses the first entry of the open menu with the keyboard."""
        self.press("Down")
        self.press("Return")

    def press(self, *names):
        """Presses these keys, and then releases them in reverse order."""
        for name in names:
            self.key(KEYS[name], True)
        for name in reversed(names):
            self.key(KEYS[name], False)

    def type(self, text):
        for letter in text:
            self.press(letter)

    def still_picture(self, wanted=lambda picture: True, text="a still picture", limit=60):
        """Waits until two pictures in a row are equal and satisfy `wanted`. Returns that picture."""
        before = [None]

        def same():
            picture = self.picture()
            still = before[0] is not None and picture.tobytes() == before[0].tobytes()
            before[0] = picture
            return picture if still and wanted(picture) else None
        return wait_for(same, text, limit)
