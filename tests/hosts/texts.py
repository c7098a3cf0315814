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
    return {_LOCALES[language]: {key: json.loads(text) + (ADDRESS if address else "")
                                 for key, text, address in re.findall(entry, table)}
            for language, table in zip(parts[::2], parts[1::2], strict=True)}


TEXTS = _tables()

# The titles of the menu entries from top to bottom.
SEPARATOR = None
_MENU = ["block", "menu.hotkeyHint", "menu.settings", "menu.launchAtLogin", "menu.activate", "menu.about", SEPARATOR,
         "menu.quit"]
TITLES = {locale: [key and table[key] for key in _MENU] for locale, table in TEXTS.items()}

# The positions of the entries in the menu and in the lists of TITLES.
MUTE, HINT, SETTINGS, LAUNCH_AT_LOGIN, ACTIVATE, ABOUT, _, QUIT = range(8)
