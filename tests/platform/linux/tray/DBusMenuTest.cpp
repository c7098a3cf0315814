#include "BLE_kovra/platform/linux/tray/DBusMenu.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/platform/linux/tray/StatusNotifierRig.h"

namespace kovra {
namespace {

const std::string refused = "error org.freedesktop.DBus.Error.InvalidArgs";
const std::string tooLong = "error org.freedesktop.DBus.Error.LimitsExceeded";

const std::string mute = R"(["label":"Mute" "toggle-type":"checkmark" "toggle-state":1])";
const std::string hint = R"(["label":"a__hint & <b>" "enabled":no])";
const std::string settings = R"(["label":"Settings" "shortcut":[["Control" "comma"]]])";
const std::string separator = R"(["type":"separator"])";
const std::string quit = R"(["label":"Quit" "shortcut":[["Control" "q"]]])";
const std::string root = R"(["children-display":"submenu"])";

// Returns the layout without its first number. This is the revision, which each change increases.
std::string withoutRevision(const std::string& layout) { return layout.substr(layout.find(' ') + 1); }

struct MenuRig : StatusNotifierRig {
    MenuRig() { showInPanel(); }
    explicit MenuRig(const std::string& desktop) : StatusNotifierRig(desktop) { showInPanel(); }

    std::string layout(std::int32_t parent = 0, std::int32_t depth = -1, const std::vector<std::string>& names = {}) {
        const std::string layout = panel->layout(parent, depth, names);
        return layout.starts_with("error") ? layout : withoutRevision(layout);
    }
    std::string properties(const std::vector<std::int32_t>& ids, const std::vector<std::string>& names = {}) {
        return panel->menu("GetGroupProperties", [&](BusWriter& writer) {
            writer.openArray("i");
            for (const std::int32_t id : ids) writer.integer(id);
            writer.close().openArray("s");
            for (const std::string& name : names) writer.text(name);
            writer.close();
        });
    }
    std::string property(std::int32_t id, const char* name) {
        return panel->menu("GetProperty", [&](BusWriter& writer) { writer.integer(id).text(name); });
    }
    std::string events(const std::vector<std::pair<std::int32_t, const char*>>& events) {
        return panel->menu("EventGroup", [&](BusWriter& writer) {
            writer.openArray("(isvu)");
            for (const auto& [id, event] : events) {
                writer.openStruct("isvu").integer(id).text(event).openVariant("s").text("").close().natural(7).close();
            }
            writer.close();
        });
    }
    std::string aboutToShow(std::int32_t id) {
        return panel->menu("AboutToShow", [&](BusWriter& writer) { writer.integer(id); });
    }
    std::string aboutToShow(const std::vector<std::int32_t>& ids) {
        return panel->menu("AboutToShowGroup", [&](BusWriter& writer) {
            writer.openArray("i");
            for (const std::int32_t id : ids) writer.integer(id);
            writer.close();
        });
    }
};

TEST(DBusMenuTest, ReturnsItsWholeLayout) {
    MenuRig rig;
    EXPECT_EQ(rig.layout(), "(0 " + root + " [(1 " + mute + " []) (2 " + hint + " []) (3 " + settings + " []) (4 " +
                                separator + " []) (5 " + quit + " [])])");
}

TEST(DBusMenuTest, ReturnsItsLayoutAtAnyDepth) {
    MenuRig rig;
    EXPECT_EQ(rig.layout(0, 0), "(0 " + root + " [])");
    for (const int depth : {1, 2, 2'147'483'647, -2, -2'147'483'647 - 1}) EXPECT_EQ(rig.layout(0, depth), rig.layout());
}

TEST(DBusMenuTest, ReturnsTheLayoutBelowAnyItem) {
    MenuRig rig;
    for (const int depth : {-1, 0, 1, 9}) EXPECT_EQ(rig.layout(5, depth), "(5 " + quit + " [])");
}

TEST(DBusMenuTest, ReturnsOnlyTheRequestedProperties) {
    MenuRig rig;
    EXPECT_EQ(rig.layout(0, -1, {"label", "type", "no such thing"}),
              R"((0 [] [(1 ["label":"Mute"] []) (2 ["label":"a__hint & <b>"] []) (3 ["label":"Settings"] []) )"
              R"((4 ["type":"separator"] []) (5 ["label":"Quit"] [])]))");
    EXPECT_EQ(rig.properties({1, 2}, {"enabled"}), R"([(1 []) (2 ["enabled":no])])");
}

TEST(DBusMenuTest, ReturnsThePropertiesOfAGroupOfItems) {
    MenuRig rig;
    EXPECT_EQ(rig.properties({5, 1}), "[(5 " + quit + ") (1 " + mute + ")]");
    EXPECT_EQ(rig.properties({99, 4, -1}), "[(4 " + separator + ")]");
}

TEST(DBusMenuTest, ReturnsThePropertiesOfAllItemsIfNoneIsNamed) {
    MenuRig rig;
    EXPECT_EQ(rig.properties({}), "[(0 " + root + ") (1 " + mute + ") (2 " + hint + ") (3 " + settings + ") (4 " +
                                      separator + ") (5 " + quit + ")]");
}

TEST(DBusMenuTest, ReturnsAPropertyEvenIfItHasItsDefault) {
    MenuRig rig;
    EXPECT_EQ(rig.property(1, "label"), "\"Mute\"");
    EXPECT_EQ(rig.property(1, "toggle-state"), "1");
    EXPECT_EQ(rig.property(5, "toggle-state"), "-1");
    EXPECT_EQ(rig.property(1, "visible"), "yes");
    EXPECT_EQ(rig.property(1, "enabled"), "yes");
    EXPECT_EQ(rig.property(2, "enabled"), "no");
    EXPECT_EQ(rig.property(4, "type"), "\"separator\"");
    EXPECT_EQ(rig.property(5, "type"), "\"standard\"");
    EXPECT_EQ(rig.property(1, "shortcut"), "[]");
    EXPECT_EQ(rig.property(1, "no such thing"), refused);
    EXPECT_EQ(rig.property(1, ""), refused);
}

TEST(DBusMenuTest, HasThePropertiesOfTheInterface) {
    MenuRig rig;
    const auto property = [&](const char* name) {
        return rig.panel->property("/MenuBar", "com.canonical.dbusmenu", name);
    };
    EXPECT_EQ(property("Version"), "3");
    EXPECT_EQ(property("TextDirection"), "\"ltr\"");
    EXPECT_EQ(property("Status"), "\"normal\"");
    EXPECT_EQ(property("IconThemePath"), "[]");
}

TEST(DBusMenuTest, NeverNeedsAnUpdateBeforeItIsShown) {
    MenuRig rig;
    for (const int id : {0, 1, 5}) EXPECT_EQ(rig.aboutToShow(id), "no");
    EXPECT_EQ(rig.aboutToShow({0, 1}), "[] []");
    EXPECT_EQ(rig.aboutToShow(std::vector<std::int32_t>{}), "[] []");
    EXPECT_EQ(rig.aboutToShow({0, 77, -3}), "[] [77 -3]");
}

TEST(DBusMenuTest, PerformsWhatWasClicked) {
    MenuRig rig;
    EXPECT_EQ(rig.panel->click(3), "");
    EXPECT_EQ(rig.takeDone(), "Settings; ");
    EXPECT_EQ(rig.panel->click(5), "");
    EXPECT_EQ(rig.takeDone(), "Quit; ");
}

TEST(DBusMenuTest, PerformsAGroupOfClicksInTheirOrderAndNamesTheItemsThatAreMissing) {
    MenuRig rig;
    EXPECT_EQ(rig.events({{0, "opened"}, {5, "clicked"}, {99, "clicked"}, {1, "clicked"}, {-1, "hovered"}}), "[99 -1]");
    EXPECT_EQ(rig.takeDone(), "Quit; Mute; ");
    EXPECT_EQ(rig.events({}), "[]");
}

TEST(DBusMenuTest, IgnoresOtherEventsAndItemsWithoutAnAction) {
    MenuRig rig;
    for (const int id : {0, 1, 2, 3, 4, 5}) {
        for (const char* event : {"opened", "closed", "hovered", "x-vendor-thing", "", "Clicked"}) {
            EXPECT_EQ(rig.panel->event(id, event), "");
        }
    }
    for (const int id : {0, 2, 4}) EXPECT_EQ(rig.panel->click(id), "");
    EXPECT_EQ(rig.takeDone(), "");
    EXPECT_EQ(rig.panel->signals(), "");
}

TEST(DBusMenuTest, RefusesItemsThatDoNotExist) {
    MenuRig rig;
    for (const int id : {6, 99, -1, 2'147'483'647, -2'147'483'647 - 1}) {
        EXPECT_EQ(rig.layout(id), refused);
        EXPECT_EQ(rig.property(id, "label"), refused);
        EXPECT_EQ(rig.panel->click(id), refused);
        EXPECT_EQ(rig.aboutToShow(id), refused);
        EXPECT_EQ(rig.aboutToShow(std::vector<std::int32_t>{id, id}), refused);
        EXPECT_EQ(rig.events({{id, "clicked"}, {id, "opened"}}), refused);
    }
    EXPECT_EQ(rig.takeDone(), "");
}

TEST(DBusMenuTest, RefusesListsThatAreTooLong) {
    MenuRig rig;
    const std::vector<std::int32_t> most(DBusMenu::longestList, 4);
    EXPECT_TRUE(rig.properties(most).starts_with("[(4 "));
    std::vector<std::int32_t> many = most;
    many.push_back(4);
    EXPECT_EQ(rig.properties(many), tooLong);
    EXPECT_EQ(rig.aboutToShow(many), tooLong);
    EXPECT_EQ(rig.layout(0, -1, std::vector<std::string>(100'000, "label")), tooLong);
    EXPECT_EQ(rig.events(std::vector<std::pair<std::int32_t, const char*>>(50'000, {1, "clicked"})), tooLong);
    EXPECT_EQ(rig.takeDone(), "");
}

TEST(DBusMenuTest, SignalsTheStateOfAClickedCheckMarkEvenIfItIsUnchanged) {
    MenuRig rig;
    rig.panel->click(1);
    EXPECT_EQ(rig.takeDone(), "Mute; ");
    EXPECT_EQ(rig.panel->signals(), "ItemsPropertiesUpdated [(1 [\"toggle-state\":1])] []; ");
    rig.panel->click(5);
    rig.takeDone();
    EXPECT_EQ(rig.panel->signals(), "");
}

TEST(DBusMenuTest, SignalsAnotherLayoutAndRefusesALateClickInTheOldOne) {
    MenuRig rig;
    const std::string before = rig.panel->layout();
    rig.item->setMenu({{rig.entry("Else"), rig.mark("Mute", 1, MenuItemState::off)}});
    rig.settle();
    const std::string news = rig.panel->signals();
    const std::string after = rig.panel->layout();
    const std::string revision = after.substr(0, after.find(' '));
    EXPECT_EQ(news, "LayoutUpdated " + revision + " 0; ");
    EXPECT_GT(std::stoi(revision), std::stoi(before));
    EXPECT_EQ(withoutRevision(after), "(0 " + root +
                                          R"( [(6 ["label":"Else"] []) (7 ["label":"Mute" )"
                                          R"("toggle-type":"checkmark" "toggle-state":0] [])]))");
    EXPECT_EQ(rig.panel->click(1), refused);
    EXPECT_EQ(rig.takeDone(), "");
    EXPECT_EQ(rig.panel->click(6), "");
    EXPECT_EQ(rig.takeDone(), "Else; ");
    rig.item->setMenu({});
    rig.settle();
    EXPECT_EQ(rig.layout(), "(0 " + root + " [])");
}

// A panel that reads the menu while it is replaced would otherwise show items without texts.
TEST(DBusMenuTest, KeepsTheNumbersOfItemsIfOnlyAHintChanges) {
    MenuRig rig;
    Menu menu = rig.menu();
    menu.items[1] = rig.entry("Choose");
    rig.item->setMenu(menu);
    rig.settle();
    EXPECT_EQ(rig.panel->signals(), R"(ItemsPropertiesUpdated [(2 ["label":"Choose"])] [(2 ["enabled"])]; )");
    EXPECT_EQ(rig.panel->click(2), "");
    EXPECT_EQ(rig.takeDone(), "Choose; ");
    rig.item->setMenu(rig.menu());
    rig.settle();
    EXPECT_EQ(rig.panel->signals(),
              R"(ItemsPropertiesUpdated [(2 ["label":"a__hint & <b>" "enabled":no])] [(2 [])]; )");
    EXPECT_EQ(rig.panel->click(2), "");
    EXPECT_EQ(rig.takeDone(), "");
    rig.item->setMenu(rig.menu());
    rig.settle();
    EXPECT_EQ(rig.panel->signals(), "");
}

TEST(DBusMenuTest, RefusesALateClickOnAnItemThatMeansSomethingElseNow) {
    for (const std::size_t changed : {0U, 3U}) {
        MenuRig rig;
        Menu menu = rig.menu();
        menu.items[changed] = rig.entry("Else");
        rig.item->setMenu(menu);
        rig.settle();
        EXPECT_TRUE(rig.panel->signals().starts_with("LayoutUpdated ")) << changed;
        EXPECT_EQ(rig.panel->click(1), refused);
    }
}

TEST(DBusMenuTest, NamesOnlyKeysThatHaveANameInEveryToolkit) {
    MenuRig rig;
    Menu menu;
    std::string expected = "[(0 [])";
    for (const std::string key : {"a", "z", "0", "9", "", "€", "ab", "Q", "`", "{", "/", ":"}) {
        const std::string id = std::to_string(6 + menu.items.size());
        const bool isNamed = menu.items.size() < 4;
        menu.items.push_back(rig.entry("item", key));
        expected += " (" + id + (isNamed ? R"( ["shortcut":[["Control" ")" + key + R"("]]]))" : " [])");
    }
    rig.item->setMenu(menu);
    rig.settle();
    EXPECT_EQ(rig.properties({}, {"shortcut"}), expected + "]");
}

TEST(DBusMenuTest, NamesTheCommaAsTheDesktopsPanelsReadIt) {
    for (const char* desktop : {"", "GNOME", "ubuntu:GNOME", "XFCE", "MATE", "sway"}) {
        MenuRig rig(desktop);
        EXPECT_EQ(rig.property(3, "shortcut"), R"([["Control" "comma"]])") << desktop;
    }
    for (const char* desktop : {"KDE", "LXQt", "My:KDE"}) {
        MenuRig rig(desktop);
        EXPECT_EQ(rig.property(3, "shortcut"), R"([["Control" ","]])") << desktop;
    }
}

TEST(DBusMenuTest, ReplacesBytesThatAreNotText) {
    MenuRig rig;
    rig.item->setMenu({{rig.entry("a\xFF_")}});
    rig.settle();
    EXPECT_EQ(rig.property(6, "label"), "\"a\xEF\xBF\xBD__\"");
}

}  // namespace
}  // namespace kovra
