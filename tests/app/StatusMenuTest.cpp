#include "BLE_kovra/app/StatusMenu.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/l10n/L10n.h"
#include "tests/support/Dump.h"

namespace kovra {
namespace {

using enum MenuItemState;

std::string menuIn(const std::string& language, MenuItemState enabled = on, MenuItemState login = off) {
    return dump(makeStatusMenu(L10n({language}), {}, enabled, login));
}

TEST(StatusMenuTest, IsInEnglish) {
    EXPECT_EQ(menuIn("en"), R"([x] Mute trackpad tag 1 -> toggleEnabled
Shortcut: Ctrl+Opt+T disabled
Settings… (,) -> openSettings
[ ] Launch at login tag 2 -> toggleLaunchAtLogin
Activate driver… -> activateDriver
About… -> showAbout
---
Quit (q) -> quit
)");
}

TEST(StatusMenuTest, IsInRussian) {
    EXPECT_EQ(menuIn("ru-RU"), R"([x] Глушить трекпад tag 1 -> toggleEnabled
Горячая клавиша: Ctrl+Opt+T disabled
Настройки… (,) -> openSettings
[ ] Запускать при входе tag 2 -> toggleLaunchAtLogin
Активировать драйвер… -> activateDriver
О программе… -> showAbout
---
Завершить (q) -> quit
)");
}

TEST(StatusMenuTest, IsInUkrainian) {
    EXPECT_EQ(menuIn("uk"), R"([x] Глушити тачпад tag 1 -> toggleEnabled
Гаряча клавіша: Ctrl+Opt+T disabled
Налаштування… (,) -> openSettings
[ ] Запускати під час входу tag 2 -> toggleLaunchAtLogin
Активувати драйвер… -> activateDriver
Про програму… -> showAbout
---
Завершити (q) -> quit
)");
}

TEST(StatusMenuTest, IsInFrench) {
    EXPECT_EQ(menuIn("fr-CA"), R"([x] Couper le trackpad tag 1 -> toggleEnabled
Raccourci : Ctrl+Opt+T disabled
Réglages… (,) -> openSettings
[ ] Lancer à l’ouverture de session tag 2 -> toggleLaunchAtLogin
Activer le pilote… -> activateDriver
À propos… -> showAbout
---
Quitter (q) -> quit
)");
}

TEST(StatusMenuTest, IsInGerman) {
    EXPECT_EQ(menuIn("de"), R"([x] Trackpad deaktivieren tag 1 -> toggleEnabled
Tastenkürzel: Ctrl+Opt+T disabled
Einstellungen… (,) -> openSettings
[ ] Beim Anmelden starten tag 2 -> toggleLaunchAtLogin
Treiber aktivieren… -> activateDriver
Über… -> showAbout
---
Beenden (q) -> quit
)");
}

TEST(StatusMenuTest, IsInSpanish) {
    EXPECT_EQ(menuIn("es-MX"), R"([x] Silenciar trackpad tag 1 -> toggleEnabled
Atajo: Ctrl+Opt+T disabled
Ajustes… (,) -> openSettings
[ ] Abrir al iniciar sesión tag 2 -> toggleLaunchAtLogin
Activar controlador… -> activateDriver
Acerca de… -> showAbout
---
Salir (q) -> quit
)");
}

TEST(StatusMenuTest, ShowsBothCheckMarks) {
    EXPECT_TRUE(menuIn("en", off, on).starts_with("[ ] Mute trackpad"));
    EXPECT_NE(menuIn("en", off, on).find("[x] Launch at login"), std::string::npos);
}

TEST(StatusMenuTest, EachItemPerformsItsOwnAction) {
    std::string performed;
    const auto note = [&](const char* name) { return [&performed, name] { performed += std::string(name) + ' '; }; };
    const StatusMenuActions actions{.toggleEnabled = note("toggleEnabled"),
                                    .requestHotKey = note("requestHotKey"),
                                    .openSettings = note("openSettings"),
                                    .toggleLaunchAtLogin = note("toggleLaunchAtLogin"),
                                    .activateDriver = note("activateDriver"),
                                    .showAbout = note("showAbout"),
                                    .quit = note("quit")};
    const Menu menu = makeStatusMenu(L10n({"en"}), actions, on, off, {HotKeyState::Holder::refused, ""});
    std::string named;
    for (const MenuItem& item : menu.items) {
        if (!item.action) continue;
        item.action->perform();
        named += item.action->name + ' ';
    }
    EXPECT_EQ(performed, named);
    EXPECT_TRUE(performed.starts_with("toggleEnabled requestHotKey openSettings "));
}

std::string hint(const std::string& language, const HotKeyState& hotKey) {
    const Menu menu = makeStatusMenu(L10n({language}, Wording::linuxDesktop), {}, on, off, hotKey);
    EXPECT_FALSE(menu.items[1].isEnabled);
    EXPECT_FALSE(menu.items[1].action);
    return menu.items[1].title;
}

TEST(StatusMenuTest, SaysWhichKeyItIsOrWhyThereIsNone) {
    using enum HotKeyState::Holder;
    EXPECT_EQ(hint("en", {}), "Shortcut: Ctrl+Alt+T");
    EXPECT_EQ(hint("de", {}), "Tastenkürzel: Strg+Alt+T");
    EXPECT_EQ(hint("en", {us, "Meta+M"}), "Shortcut: Meta+M");
    EXPECT_EQ(hint("fr", {us, "Meta+M"}), "Raccourci\u00a0: Meta+M");
    EXPECT_EQ(hint("en", {another, ""}), "Ctrl+Alt+T is used by another program");
    EXPECT_EQ(hint("en", {nobody, ""}), "No shortcut: assign a key to “ble-kovractl toggle”");
}

TEST(StatusMenuTest, OffersToChooseAKeyWhereTheDesktopAsksForIt) {
    const std::vector<std::pair<const char*, const char*>> titles{
        {"en", "Choose a shortcut…"},    {"ru", "Выбрать горячую клавишу…"}, {"uk", "Вибрати гарячу клавішу…"},
        {"fr", "Choisir un raccourci…"}, {"de", "Tastenkürzel auswählen…"},  {"es", "Elegir un atajo…"}};
    for (const auto& [language, title] : titles) {
        for (const auto holder : {HotKeyState::Holder::unrequested, HotKeyState::Holder::refused}) {
            const Menu menu = makeStatusMenu(L10n({language}, Wording::linuxDesktop), {}, on, off, {holder, ""});
            EXPECT_EQ(menu.items[1].title, title);
            EXPECT_TRUE(menu.items[1].isEnabled);
            ASSERT_TRUE(menu.items[1].action);
            EXPECT_EQ(menu.items[1].action->name, "requestHotKey");
        }
    }
}

TEST(StatusMenuTest, FindsItemsByTag) {
    Menu menu = makeStatusMenu(L10n({"en"}), {}, on, off);
    EXPECT_EQ(menu.itemWithTag(StatusMenuTag::launchAtLogin), &menu.items[3]);
    EXPECT_EQ(menu.itemWithTag(3), nullptr);
    EXPECT_EQ(Menu{}.itemWithTag(StatusMenuTag::enabled), nullptr);
}

}  // namespace
}  // namespace kovra
