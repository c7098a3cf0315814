"""The program's texts by locale, read from tests/l10n/ExpectedTexts.cpp."""

import json
import pathlib
import re

_ROOT = pathlib.Path(__file__).resolve().parents[2]
_LOCALES = {"en": "en_GB", "ru": "ru_RU", "uk": "uk_UA", "fr": "fr_FR", "de": "de_DE", "es": "es_ES"}
ENGLISH = _LOCALES["en"]


def _constant(file, pattern):
    return re.search(pattern, (_ROOT / file).read_text(encoding="utf-8"))[1]


VERSION = _constant("CMakeLists.txt", r"\nproject\(\S+ VERSION (\d+(?:\.\d+)+)\s")
ADDRESS = _constant("BLE_kovra/l10n/SupportAddress.h", r'supportAddress = "(.*)"')


def _tables():
    source = (_ROOT / "tests/l10n/ExpectedTexts.cpp").read_text(encoding="utf-8")
    _, *parts = re.split(r"\{L10n::Lang::(\w+), \{\n", source)
    entry = r'\{"([\w.]+)", (".*")( \+ address)?\},\n'
    tables = {locale: {} for locale in _LOCALES.values()}
    # The texts for Linux follow those for every system, and replace them.
    for language, table in zip(parts[::2], parts[1::2], strict=True):
        tables[_LOCALES[language]] |= {key: json.loads(text) + (ADDRESS if address else "")
                                       for key, text, address in re.findall(entry, table)}
    return tables


TEXTS = _tables()

LOCALES = list(TEXTS)

SEPARATOR = None


def titles(locale, has_hot_key):
    """Returns the titles of the menu entries from top to bottom."""
    hint = "menu.hotkeyHint" if has_hot_key else "menu.hotkeyHint.unavailable"
    menu = ["block", hint, "menu.settings", "menu.launchAtLogin", "menu.activate", "menu.about", SEPARATOR, "menu.quit"]
    return [key and TEXTS[locale][key] for key in menu]


# The positions of the entries in the menu and in the lists of titles().
MUTE, HINT, SETTINGS, LAUNCH_AT_LOGIN, ACTIVATE, ABOUT, _, QUIT = range(8)
