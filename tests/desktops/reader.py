"""A screen reader: reads the windows of the program in a session."""

from gi.repository import GLib

from accessible import CHECKED, SHOWING, Accessibility
from item import PROPERTIES
from spoken_windows import BUTTON, BUTTONS
from waiting import Failed

STATUS = ("org.a11y.Bus", "/org/a11y/bus")


class ScreenReader:
    """Announces itself to the session, as screen readers do, within a `with` block."""

    def __init__(self, session, caller):
        self._session, self._caller = session, caller
        self._bus = None

    def __enter__(self):
        self._bus = Accessibility(self._session)
        self._announce(True)
        return self

    def __exit__(self, *_):
        self._announce(False)
        self._bus.close()

    def windows(self):
        """Returns what the program's windows contain, as spoken_windows says it."""
        program = self._bus.program("BLE-kovra")
        windows = {}
        try:
            for window in program.children() if program else ():
                inside = windows.setdefault((_role(window), window.label), [])
                inside += [(_role(thing), thing.label, thing.has(CHECKED)) for thing in window.all()
                           if thing.label and thing.has(SHOWING)]
        except Failed:  # it disappears just now
            return {}
        return {window: sorted(inside) for window, inside in windows.items()}

    def _announce(self, is_running):
        self._caller.call(*STATUS, PROPERTIES, "Set", GLib.Variant(
            "(ssv)", ("org.a11y.Status", "ScreenReaderEnabled", GLib.Variant("b", is_running))))


def _role(thing):
    role = thing.role
    # The toolkit's own name for the role of alerts.
    return {"alert message": "alert"}.get(role, BUTTON if role in BUTTONS else role)
