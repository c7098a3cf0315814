"""The windows in which a desktop asks whether the program may have its hot key."""

from waiting import check, wait_for


class KeyDialogue:
    def __init__(self, desktop, shell):
        self._title, self._shell = desktop.asks_for_key, shell

    def windows(self):
        """Returns the windows in which the desktop asks, if it does that."""
        return [one for one in self._shell.windows() if self._title and self._title in one.title]

    def refuse(self):
        """Waits until the desktop asks, and refuses."""
        self._answer(lambda dialogue: self._shell.press("Alt", "F4"))

    def accept(self):
        """Waits until the desktop asks, and agrees."""
        self._answer(self._shell.accept_key)

    def close_page(self):
        """Waits until the desktop shows its page of shortcuts, and closes it."""
        page = lambda: next((one for one in self._shell.windows() if one.title.startswith("Shortcuts")), None)
        wait_for(lambda: page() and page().has_keyboard, "the desktop's page of shortcuts", 60)
        self._shell.press("Alt", "F4")
        wait_for(lambda: not page(), "the page to close", 30)

    def _answer(self, answer):
        wait_for(lambda: any(one.has_keyboard for one in self.windows()), "the dialogue for the hot key in front", 60)
        check(len(self.windows()) == 1, "the desktop asks more than once")
        answer(self.windows()[0])
        wait_for(lambda: not self.windows(), "the dialogue to close", 30)
