"""An editor in the session, in which a person types."""

from waiting import check, wait_for

OUTPUT = "tmp/kovra-typed"
TITLE = "Editor"


class Editor:
    """A window with one line of text, within a `with` block."""

    def __init__(self, world):
        self._world = world

    def __enter__(self):
        self._output.unlink(missing_ok=True)
        self._world.run("/bin/sh", "-c", f"zenity --entry --title={TITLE} >/{OUTPUT}.part; mv /{OUTPUT}.part /{OUTPUT}",
                        name="editor")
        wait_for(lambda: self._window() and self._window().has_keyboard, "the editor in front", 30)
        return self

    def __exit__(self, *_):
        for pid in self._world.processes("zenity"):
            self._world.container.run("kill", pid, check_status=False)
        wait_for(lambda: not self._window(), "the editor to close", 20)

    def type(self, text):
        self._world.shell.type(text)
        others = [one.title for one in self._world.shell.windows() if one.has_keyboard and one.title != TITLE]
        check(not others, f"while somebody types, these windows have the keyboard: {others}")

    def finish(self):
        """Presses Return. Returns the text that the editor has received, or what it has until somebody closes it."""
        self._world.shell.press("Return")
        wait_for(self._output.exists, "the editor to end, with what was typed", 10)
        return self._output.read_text().rstrip("\n")

    @property
    def _output(self):
        return self._world.session.files / OUTPUT

    def _window(self):
        return next((one for one in self._world.shell.windows() if one.title == TITLE), None)
