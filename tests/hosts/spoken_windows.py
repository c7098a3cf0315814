"""What a screen reader reads in the program's windows: {(role, title): [(role, name, is checked)]}, by name."""

from texts import ADDRESS, VERSION

# at-spi2-core calls the role of a button "push button" on Debian 12 and "button" on Debian 13.
BUTTON, BUTTONS = "button", ["push button", "button"]


def settings(text, devices, status, is_on, advice):
    """Returns the settings window with these rows of devices. `advice` says whether it explains how to get the icon."""
    return _window("frame", "BLE-kovra", [
        ("label", text["settings.title"], False), ("check box", text["block"], is_on),
        ("panel", text["settings.mode"], False), ("label", text["settings.mode"], False),
        ("radio button", text["mode.always"], False), ("radio button", text["mode.onDevice"], True),
        ("label", text["settings.chooseMouse"], False), ("label", text["settings.hint"], False), *devices,
        ("label", text[status], False), *([("label", text["tray.advice"], False)] if advice else []),
        ("label", text["settings.developedBy"], False), ("link", ADDRESS, False)])


def driver(text):
    return _window("alert", text["driver.title"], [
        ("label", text["driver.title"], False), ("label", text["driver.body"], False),
        (BUTTON, text["driver.activate"], False), (BUTTON, text["driver.later"], False)])


def about(text):
    title = f"BLE-kovra {VERSION}"
    return _window("alert", title, [
        ("label", title, False), ("label", text["about.info"], False),
        (BUTTON, text["about.ok"], False), (BUTTON, text["about.contact"], False)])


def _window(role, title, inside):
    # The order of the mice is not compared. HIDMonitorTest and GlibcLocaleTest test it.
    return {(role, title): sorted(inside)}
