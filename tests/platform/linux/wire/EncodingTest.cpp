#include "BLE_kovra/platform/linux/wire/Encoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "tests/platform/linux/wire/DamagedLine.h"
#include "tests/support/Seeds.h"

namespace kovra {
namespace {

using Json = nlohmann::json;
using namespace std::chrono_literals;

Drawing aDrawing() {
    return {.name = "some-symbolic",
            .size = {18, 18},
            .strokes = {{RoundedRectangle{.origin = {2.5, 4}, .size = {13, 10}, .cornerRadii = {2, 2.25}}, 1.2},
                        {Segment{.from = {3, 3}, .to = {15, 15.5}}, 1.6}},
            .glyphs = {{.pixels = 16, .strokes = {{Segment{.from = {0, 0}, .to = {16, 16}}, 4.5, true}}}, {}}};
}

MenuItem anItem(const std::string& title) {
    MenuItem item;
    item.title = title;
    return item;
}

ShowTray aTray() {
    ShowTray tray{.image = aDrawing(),
                  .imageIsTemplate = true,
                  .toolTip = "BLE-kovra: стоит",
                  .menu = {},
                  .ink = 0xFEDCBA,
                  .outline = 0x123456};
    MenuItem& toggle = tray.menu.items.emplace_back(anItem("Mute & <b>go</b>_\n\"now\""));
    toggle.action = MenuAction{"toggle", [] {}};
    toggle.state = MenuItemState::on;
    MenuItem& hint = tray.menu.items.emplace_back(anItem("Подсказка"));
    hint.isEnabled = false;
    tray.menu.items.push_back(MenuItem::separator());
    MenuItem& quit = tray.menu.items.emplace_back(anItem("Quit"));
    quit.action = MenuAction{"quit", [] {}};
    quit.keyEquivalent = "q";
    quit.state = MenuItemState::off;
    return tray;
}

PopUpMenu aRequest() { return {.x = -17, .y = 1'080, .asked = 123'456'789ms, .menu = aTray().menu}; }

ShowTray transferred(const ShowTray& tray) {
    const std::string line = encode(ToWindow(tray));
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
    EXPECT_TRUE(line.ends_with('\n'));
    const auto decoded = decodeToWindow(line);
    EXPECT_TRUE(decoded) << line;
    return decoded ? std::get<ShowTray>(*decoded) : ShowTray();
}

void expectSame(const MenuItem& one, const MenuItem& other) {
    EXPECT_EQ(one.title, other.title);
    EXPECT_EQ(one.action.has_value(), other.action.has_value());
    if (one.action && other.action) {
        EXPECT_EQ(one.action->name, other.action->name);
        EXPECT_TRUE(one.action->perform);
    }
    EXPECT_EQ(one.keyEquivalent, other.keyEquivalent);
    EXPECT_EQ(one.state, other.state);
    EXPECT_EQ(one.isEnabled, other.isEnabled);
    EXPECT_EQ(one.isSeparator, other.isSeparator);
}

void expectSame(const Menu& one, const Menu& other) {
    ASSERT_EQ(one.items.size(), other.items.size());
    for (std::size_t i = 0; i < one.items.size(); ++i) expectSame(one.items[i], other.items[i]);
}

TEST(EncodingTest, TransfersATrayUnchanged) {
    const ShowTray sent = aTray();
    const ShowTray received = transferred(sent);
    EXPECT_EQ(received.image, sent.image);
    EXPECT_EQ(received.imageIsTemplate, sent.imageIsTemplate);
    EXPECT_EQ(received.ink, sent.ink);
    EXPECT_EQ(received.outline, sent.outline);
    EXPECT_EQ(received.toolTip, sent.toolTip);
    expectSame(received.menu, sent.menu);
}

TEST(EncodingTest, TransfersARequestForTheMenuUnchanged) {
    const auto decoded = decodeToWindow(encode(ToWindow(aRequest())));
    ASSERT_TRUE(decoded);
    const auto& received = std::get<PopUpMenu>(*decoded);
    EXPECT_EQ(received.x, -17);
    EXPECT_EQ(received.y, 1'080);
    EXPECT_EQ(received.asked, 123'456'789ms);
    expectSame(received.menu, aRequest().menu);
}

TEST(EncodingTest, TransfersTheClosingOfTheMenuWithAndWithoutAChoice) {
    for (const MenuClosed& sent : {MenuClosed{0ms, std::nullopt}, MenuClosed{123'456'789ms, 7}}) {
        EXPECT_EQ(decodeToResident(encode(ToResident(sent))), ToResident(sent));
    }
}

TEST(EncodingTest, RejectsInvalidPositionsAndTimes) {
    const Json good = Json::parse(encode(ToWindow(aRequest())));
    for (const Json& wrong : {Json(1LL << 31), Json(-(1LL << 31) - 1), Json(~0ULL), Json(1.5), Json("1"), Json()}) {
        for (const char* name : {"x", "y"}) {
            Json bad = good;
            bad[name] = wrong;
            EXPECT_FALSE(decodeToWindow(bad.dump())) << bad;
        }
    }
    for (const Json& wrong : {Json(-1), Json(~0ULL), Json(1ULL << 63), Json(1.5), Json("1"), Json()}) {
        Json bad = good;
        bad["asked"] = wrong;
        EXPECT_FALSE(decodeToWindow(bad.dump())) << bad;
    }
    EXPECT_FALSE(decodeToResident(R"({"is":"menuClosed","asked":-1})"));
    EXPECT_FALSE(decodeToResident(R"({"is":"menuClosed","asked":1,"chosen":-1})"));
}

TEST(EncodingTest, TransfersAnEmptyTray) {
    const ShowTray received = transferred(ShowTray());
    EXPECT_FALSE(received.image);
    EXPECT_FALSE(received.imageIsTemplate);
    EXPECT_FALSE(received.outline);
    EXPECT_EQ(received.toolTip, "");
    EXPECT_TRUE(received.menu.items.empty());
}

TEST(EncodingTest, HasNoNumberInAMessageThatSaysNothing) {
    for (const ToWindow& message : {ToWindow(ShowTray()), ToWindow(HideTray()), ToWindow(PopUpMenu()),
                                    ToWindow(ShowWindow()), ToWindow(ShowAlerts()), ToWindow(Ping())})
        EXPECT_EQ(encode(message).find_first_of("123456789"), std::string::npos) << encode(message);
    for (const ToResident& message : {ToResident(ItemChosen()), ToResident(MenuClosed()), ToResident(ControlChanged()),
                                      ToResident(WindowClosed()), ToResident(AlertAnswered()), ToResident(Pong())})
        EXPECT_EQ(encode(message).find_first_of("123456789"), std::string::npos) << encode(message);
}

TEST(EncodingTest, TransfersAChoice) {
    for (const std::size_t position : {std::size_t{0}, std::size_t{7}, ~std::size_t{0}}) {
        const auto decoded = decodeToResident(encode(ToResident(ItemChosen{position})));
        ASSERT_TRUE(decoded);
        EXPECT_EQ(std::get<ItemChosen>(*decoded), ItemChosen{position});
    }
}

TEST(EncodingTest, ReplacesInvalidUtf8) {
    ShowTray tray;
    tray.toolTip =
        "a\xFF"
        "b\xC3";
    EXPECT_EQ(transferred(tray).toolTip,
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD");
}

TEST(EncodingTest, IgnoresUnknownMembers) {
    EXPECT_EQ(decodeToResident(R"({"is":"itemChosen","position":3,"token":"x"})"), ToResident(ItemChosen{3}));
}

TEST(EncodingTest, RejectsInvalidMessages) {
    for (const char* line : {"", " ", "null", "[]", "3", "\"showTray\"", "{", "{}", R"({"is":7})", R"({"is":"other"})",
                             R"({"is":"itemChosen"})", R"({"is":"itemChosen","position":-1})",
                             R"({"is":"itemChosen","position":1.5})", R"({"is":"itemChosen","position":"1"})",
                             R"({"is":"itemChosen","position":1e99})", R"({"is":"itemChosen","position":1} 2)",
                             R"({"is":"itemChosen","position":99999999999999999999})", "{\"is\":\"\xFF\"}"}) {
        EXPECT_FALSE(decodeToResident(line)) << line;
        EXPECT_FALSE(decodeToWindow(line)) << line;
    }
}

TEST(EncodingTest, RejectsMessagesOfTheOtherDirection) {
    EXPECT_FALSE(decodeToResident(encode(ToWindow(aTray()))));
    EXPECT_FALSE(decodeToResident(encode(ToWindow(aRequest()))));
    EXPECT_FALSE(decodeToWindow(encode(ToResident(ItemChosen{1}))));
    EXPECT_FALSE(decodeToWindow(encode(ToResident(MenuClosed{1ms, 1}))));
}

// Replaces each value of a message in turn, by values of several types. Adds to `rejected` how many of the resulting
// messages were rejected.
void damageEverywhere(const Json& whole, Json& place, const Json::json_pointer& path, int& rejected) {
    for (const Json& wrong :
         {Json(), Json(Json::object()), Json(Json::array({nullptr})), Json("x"), Json(-3), Json(1e300)}) {
        Json damaged = whole;
        damaged[path] = wrong;
        const auto decoded = decodeToWindow(damaged.dump());
        if (!decoded) ++rejected;
        if (decoded) encode(*decoded);
    }
    if (!place.is_structured()) return;
    for (const auto& each : place.items()) {
        const auto inner = place.is_array() ? path / std::stoul(each.key()) : path / each.key();
        damageEverywhere(whole, each.value(), inner, rejected);
    }
}

TEST(EncodingTest, SurvivesAWrongValueAnywhere) {
    for (const ToWindow& message : {ToWindow(aTray()), ToWindow(aRequest())}) {
        Json whole = Json::parse(encode(message));
        int rejected = 0;
        damageEverywhere(whole, whole, Json::json_pointer(), rejected);
        EXPECT_GT(rejected, 90);
    }
}

TEST(EncodingTest, RejectsANumberInPlaceOfABoolean) {
    Json message = Json::parse(encode(ToWindow(ShowWindow())));
    EXPECT_TRUE(message["place"]["minimised"].is_boolean()) << message;
    EXPECT_TRUE(decodeToWindow(message.dump()));
    message["place"]["minimised"] = 1;
    EXPECT_FALSE(decodeToWindow(message.dump()));
}

TEST(EncodingTest, RejectsAnObjectInPlaceOfAList) {
    Json message = Json::parse(encode(ToWindow(ShowTray())));
    EXPECT_TRUE(message["menu"]["items"].is_array());
    EXPECT_TRUE(decodeToWindow(message.dump()));
    message["menu"]["items"] = Json::object();
    EXPECT_FALSE(decodeToWindow(message.dump()));
}

TEST(EncodingTest, SurvivesNestingOfAnyDepth) {
    for (const char* open : {"[", R"({"is":)", R"({"is":"showTray","menu":[)"}) {
        std::string deep;
        while (deep.size() < 900'000) deep += open;
        EXPECT_FALSE(decodeToWindow(deep));
    }
    EXPECT_FALSE(decodeToWindow(std::string(400'000, '[') + std::string(400'000, ']')));
}

TEST(EncodingTest, AcceptsAHundredLevelsAndNoMore) {
    const auto nested = [](std::size_t lists) {
        return R"({"is":"itemChosen","position":3,"unknown":)" + std::string(lists, '[') + std::string(lists, ']') +
               '}';
    };
    EXPECT_TRUE(decodeToResident(nested(99)));
    EXPECT_FALSE(decodeToResident(nested(100)));
}

// A damaged line is rejected, or it is a message that can be encoded and decoded again.
TEST(EncodingTest, SurvivesRandomDamage) {
    for (const auto seed : fixedAndFreshSeeds(3)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const std::vector<std::string> lines{encode(ToWindow(aTray())), encode(ToWindow(aRequest())),
                                             encode(ToResident(ItemChosen{5})), encode(ToResident(MenuClosed{9ms, 5}))};
        int rejected = 0;
        for (int round = 0; round < 5'000; ++round) {
            std::string line = lines[random() % lines.size()];
            for (auto damages = 1 + random() % 4; damages > 0 && !line.empty(); --damages) {
                const std::size_t at = random() % line.size();
                switch (random() % 4) {
                    case 0:
                        line[at] = static_cast<char>(random() % 256);
                        break;
                    case 1:
                        line.erase(at, 1 + random() % 10);
                        break;
                    case 2:
                        line.insert(at, line.substr(random() % line.size(), random() % 20));
                        break;
                    default:
                        line[at] = "{}[],:\"0-e\\"[random() % 11];
                }
            }
            if (!isAccepted(line)) ++rejected;
        }
        EXPECT_GT(rejected, 1'000);
    }
}

}  // namespace
}  // namespace kovra
