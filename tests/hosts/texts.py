"""The menu's titles from top to bottom, as each language has them."""

SEPARATOR = None

# By the locale that a person with this language has.
TITLES = {
    "en_GB": ["Mute trackpad", "Shortcut: Ctrl+Opt+T", "Settings…", "Launch at login", "Activate driver…", "About…",
              SEPARATOR, "Quit"],
    "ru_RU": ["Глушить трекпад", "Горячая клавиша: Ctrl+Opt+T", "Настройки…", "Запускать при входе",
              "Активировать драйвер…", "О программе…", SEPARATOR, "Завершить"],
    "uk_UA": ["Глушити тачпад", "Гаряча клавіша: Ctrl+Opt+T", "Налаштування…", "Запускати під час входу",
              "Активувати драйвер…", "Про програму…", SEPARATOR, "Завершити"],
    "fr_FR": ["Couper le trackpad", "Raccourci : Ctrl+Opt+T", "Réglages…", "Lancer à l’ouverture de session",
              "Activer le pilote…", "À propos…", SEPARATOR, "Quitter"],
    "de_DE": ["Trackpad deaktivieren", "Tastenkürzel: Ctrl+Opt+T", "Einstellungen…", "Beim Anmelden starten",
              "Treiber aktivieren…", "Über…", SEPARATOR, "Beenden"],
    "es_ES": ["Silenciar trackpad", "Atajo: Ctrl+Opt+T", "Ajustes…", "Abrir al iniciar sesión", "Activar controlador…",
              "Acerca de…", SEPARATOR, "Salir"],
}
ENGLISH = "en_GB"

# Positions in these lists, and in the menu.
MUTE, HINT, SETTINGS, LAUNCH_AT_LOGIN, ACTIVATE, ABOUT, _, QUIT = range(8)
