#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "BLE_kovra/platform/linux/wire/LineSocket.h"
#include "tests/platform/linux/wire/DamagedLine.h"
#include "tests/platform/linux/wire/RandomMessages.h"
#include "tests/support/Seeds.h"

namespace kovra {
namespace {

using Json = nlohmann::json;

ShowWindow transferred(const ShowWindow& window) {
    const std::string line = encode(ToWindow(window));
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    const auto decoded = decodeToWindow(line);
    EXPECT_TRUE(decoded) << line;
    return decoded ? std::get<ShowWindow>(*decoded) : ShowWindow();
}

ShowWindow aWindowWith(View content) {
    ShowWindow window;
    window.content = std::move(content);
    return window;
}

struct ExpectSameKind {
    template <typename Kind>
    void operator()(const Kind& one, const Kind& other) const {
        EXPECT_EQ(one, other);
    }
    void operator()(const Toggle& one, const Toggle& other) const {
        EXPECT_EQ(one.isOn, other.isOn);
        EXPECT_FALSE(other.set);
    }
    void operator()(const Picker& one, const Picker& other) const {
        EXPECT_EQ(one.title, other.title);
        EXPECT_EQ(one.options, other.options);
        EXPECT_EQ(one.selection, other.selection);
        EXPECT_FALSE(other.select);
    }
    template <typename One, typename Other>
    void operator()(const One&, const Other&) const {
        ADD_FAILURE() << "another kind";
    }
};

void expectSame(const View& sent, const View& received) {
    std::visit(ExpectSameKind(), sent.kind, received.kind);
    EXPECT_EQ(sent.modifiers, received.modifiers);
    EXPECT_EQ(sent.id, received.id);
    ASSERT_EQ(sent.children.size(), received.children.size());
    for (std::size_t i = 0; i < sent.children.size(); ++i) expectSame(sent.children[i], received.children[i]);
}

TEST(EncodingOfWindowsTest, TransfersAnyWindowUnchangedExceptItsActions) {
    for (const auto seed : fixedAndFreshSeeds(5)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomMessages messages(seed);
        for (int round = 0; round < 100; ++round) {
            const ShowWindow sent = messages.window();
            const ShowWindow received = transferred(sent);
            EXPECT_EQ(received.title, sent.title);
            EXPECT_EQ(received.styleMask, sent.styleMask);
            EXPECT_EQ(received.contentSize, sent.contentSize);
            EXPECT_EQ(received.front, sent.front);
            EXPECT_EQ(received.activationToken, sent.activationToken);
            EXPECT_EQ(received.place, sent.place);
            EXPECT_EQ(received.acknowledged, sent.acknowledged);
            expectSame(sent.content, received.content);
        }
    }
}

TEST(EncodingOfWindowsTest, TransfersAnyAlertsUnchanged) {
    for (const auto seed : fixedAndFreshSeeds(5)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomMessages messages(seed);
        for (int round = 0; round < 300; ++round) {
            const ShowAlerts sent = messages.alerts();
            const auto decoded = decodeToWindow(encode(ToWindow(sent)));
            ASSERT_TRUE(decoded);
            EXPECT_EQ(std::get<ShowAlerts>(*decoded).front, sent.front);
            const auto& received = std::get<ShowAlerts>(*decoded).alerts;
            ASSERT_EQ(received.size(), sent.alerts.size());
            for (std::size_t i = 0; i < received.size(); ++i) {
                EXPECT_EQ(received[i].number, sent.alerts[i].number);
                EXPECT_EQ(received[i].activationToken, sent.alerts[i].activationToken);
                EXPECT_EQ(received[i].alert, sent.alerts[i].alert);
            }
        }
    }
}

TEST(EncodingOfWindowsTest, TransfersAnyActionOfTheUserUnchanged) {
    for (const auto seed : fixedAndFreshSeeds(5)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomMessages messages(seed);
        for (int round = 0; round < 1'000; ++round) {
            const ToResident sent = messages.answer();
            EXPECT_EQ(decodeToResident(encode(sent)), sent);
        }
    }
}

TEST(EncodingOfWindowsTest, TransfersMessagesWithoutMembers) {
    for (const ToWindow& sent : {ToWindow(HideTray()), ToWindow(HideWindow())}) {
        const auto received = decodeToWindow(encode(sent));
        ASSERT_TRUE(received);
        EXPECT_EQ(received->index(), sent.index());
    }
}

TEST(EncodingOfWindowsTest, TransfersTheQuestionForASignOfLife) {
    const auto received = decodeToWindow(encode(ToWindow(Ping{7})));
    ASSERT_TRUE(received && std::holds_alternative<Ping>(*received));
    EXPECT_EQ(std::get<Ping>(*received).number, 7U);
}

TEST(EncodingOfWindowsTest, TransfersAnUnboundedLength) {
    const View sent = View{Text{"x"}, {}, {}, {}}.frame({.maxWidth = Frame::unbounded, .maxHeight = Frame::unbounded});
    expectSame(sent, transferred(aWindowWith(sent)).content);
}

TEST(EncodingOfWindowsTest, RejectsInvalidLengths) {
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    for (const Frame& wrong :
         {Frame{.width = Frame::unbounded}, Frame{.height = notANumber}, Frame{.maxWidth = -Frame::unbounded},
          Frame{.maxWidth = notANumber}, Frame{.maxHeight = notANumber}}) {
        EXPECT_FALSE(decodeToWindow(encode(ToWindow(aWindowWith(View{Spacer{}, {}, {}, {}}.frame(wrong))))));
    }
    EXPECT_FALSE(decodeToResident(encode(ToResident(WindowPlaced{{.scroll = notANumber}}))));
    EXPECT_FALSE(decodeToResident(R"({"is":"windowPlaced","place":{"minimised":false,"scroll":1e999}})"));
    EXPECT_FALSE(decodeToResident(R"({"is":"windowPlaced","place":{"minimised":false,"scroll":"unbounded"}})"));
}

TEST(EncodingOfWindowsTest, AcceptsOnlyABooleanOrATextAsNewValue) {
    const auto withValue = [](const Json& value) {
        return decodeToResident(
            Json{{"is", "controlChanged"}, {"number", 1}, {"path", {"a"}}, {"value", value}}.dump());
    };
    EXPECT_EQ(withValue(true), ToResident(ControlChanged{1, {"a"}, true}));
    EXPECT_EQ(withValue("true"), ToResident(ControlChanged{1, {"a"}, std::string("true")}));
    for (const Json& wrong : {Json(), Json(1), Json(0.5), Json::array(), Json::object()}) {
        EXPECT_FALSE(withValue(wrong)) << wrong;
    }
}

TEST(EncodingOfWindowsTest, TransfersTenThousandDevices) {
    View list{Stack{}, {}, {}, {}};
    for (int device = 0; device < 10'000; ++device) {
        const std::string id =
            "00001234:00005678:A mouse with rather a long name as some have " + std::to_string(device);
        View name = View{Text{"A mouse with rather a long name as some have"}, {}, {}, {}}.font(Font::body);
        View dot = View{Circle{Color::green, 0.4}, {}, {}, {}}.frame({.width = 8, .height = 8});
        View state = View{Text{"(не подключена)"}, {}, {}, {}}.font(Font::caption2).foregroundColor(Color::secondary);
        View row{Stack{}, {dot, name, {Spacer{}, {}, {}, {}}, state}, {}, {}};
        list.children.push_back(View{Toggle{true, {}}, {row}, {}, {}}.identified(id));
    }
    const std::string line = encode(ToWindow(aWindowWith(list)));
    LineReader reader(longestToWindow);
    const auto lines = reader.feed(line);
    ASSERT_EQ(lines.size(), 1);
    const auto decoded = decodeToWindow(lines[0]);
    ASSERT_TRUE(decoded);
    expectSame(list, std::get<ShowWindow>(*decoded).content);
}

TEST(EncodingOfWindowsTest, RejectsNestingDeeperThanAnyWindow) {
    const auto nested = [](int levels) {
        View view{Spacer{}, {}, {}, {}};
        for (; levels > 0; --levels) view = {Stack{}, {view}, {}, {}};
        return decodeToWindow(encode(ToWindow(aWindowWith(view)))).has_value();
    };
    EXPECT_TRUE(nested(40));
    EXPECT_FALSE(nested(60));

    std::string deep = R"({"is":"showWindow","content":)";
    while (deep.size() < longestToWindow / 2) deep += R"({"kind":{"is":"stack"},"children":[)";
    EXPECT_FALSE(decodeToWindow(deep));
    std::string closed = R"({"is":"controlChanged","number":1,"value":true,"path":)";
    closed += std::string(30'000, '[') + std::string(30'000, ']') + '}';
    EXPECT_FALSE(decodeToResident(closed));
}

TEST(EncodingOfWindowsTest, SurvivesTheLongestListThatFitsInALine) {
    std::string line = R"({"is":"controlChanged","number":1,"value":true,"path":[""})";
    line.pop_back();
    while (line.size() < longestToResident - 10) line += R"(,"")";
    EXPECT_TRUE(decodeToResident(line + "]}"));
    EXPECT_FALSE(decodeToResident(line + ",1]}"));
    EXPECT_FALSE(decodeToResident(line));
}

TEST(EncodingOfWindowsTest, RejectsATruncatedLine) {
    RandomMessages messages(7);
    for (int round = 0; round < 20; ++round) {
        const std::string state = encode(ToWindow(messages.alerts()));
        for (std::size_t length = 0; length < state.size() - 1; ++length)
            EXPECT_FALSE(decodeToWindow(state.substr(0, length)));
        const std::string answer = encode(messages.answer());
        for (std::size_t length = 0; length < answer.size() - 1; ++length)
            EXPECT_FALSE(decodeToResident(answer.substr(0, length)));
    }
}

TEST(EncodingOfWindowsTest, RejectsMessagesOfTheOtherDirection) {
    RandomMessages messages(8);
    for (int round = 0; round < 50; ++round) {
        EXPECT_FALSE(decodeToResident(encode(ToWindow(messages.window()))));
        EXPECT_FALSE(decodeToResident(encode(ToWindow(messages.alerts()))));
        EXPECT_FALSE(decodeToWindow(encode(messages.answer())));
    }
}

// Replaces each value of a message in turn, by values of several types. Returns how many of the resulting messages were
// rejected.
template <typename Decode>
int damageEverywhere(const Json& whole, const Json& place, const Json::json_pointer& path, const Decode& decode) {
    int rejected = 0;
    for (const Json& wrong :
         {Json(), Json(Json::object()), Json(Json::array({nullptr})), Json("x"), Json(-3), Json(1e300)}) {
        Json damaged = whole;
        damaged[path] = wrong;
        if (const auto decoded = decode(damaged.dump()))
            encode(*decoded);
        else
            ++rejected;
    }
    if (!place.is_structured()) return rejected;
    for (const auto& each : place.items()) {
        const auto inner = place.is_array() ? path / std::stoul(each.key()) : path / each.key();
        rejected += damageEverywhere(whole, each.value(), inner, decode);
    }
    return rejected;
}

TEST(EncodingOfWindowsTest, SurvivesAWrongValueAnywhere) {
    for (const auto seed : fixedAndFreshSeeds(1)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomMessages messages(seed);
        for (int round = 0; round < 4; ++round) {
            ShowWindow window = messages.window();
            window.content = messages.view(2);
            const Json shown = Json::parse(encode(ToWindow(window)));
            EXPECT_GT(damageEverywhere(shown, shown, Json::json_pointer(), decodeToWindow), 60);
            const Json alerts = Json::parse(encode(ToWindow(messages.alerts())));
            EXPECT_GT(damageEverywhere(alerts, alerts, Json::json_pointer(), decodeToWindow), 10);
            const Json answer = Json::parse(encode(messages.answer()));
            EXPECT_GT(damageEverywhere(answer, answer, Json::json_pointer(), decodeToResident), 10);
        }
    }
}

// A damaged line is rejected, or it is a message that can be encoded and decoded again.
TEST(EncodingOfWindowsTest, SurvivesRandomDamage) {
    for (const auto seed : fixedAndFreshSeeds(2)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomMessages messages(seed);
        int rejected = 0;
        for (int round = 0; round < 3'000; ++round) {
            ShowWindow window = messages.window();
            window.content = messages.view(1);
            std::string line = messages.coin()   ? encode(messages.answer())
                               : messages.coin() ? encode(ToWindow(window))
                                                 : encode(ToWindow(messages.alerts()));
            for (auto damages = 1 + messages.below(4); damages > 0 && !line.empty(); --damages) {
                const std::size_t at = messages.below(line.size());
                switch (messages.below(3)) {
                    case 0:
                        line[at] = static_cast<char>(messages.below(256));
                        break;
                    case 1:
                        line.erase(at, 1 + messages.below(10));
                        break;
                    default:
                        line.insert(at, line.substr(messages.below(line.size()), messages.below(20)));
                }
            }
            if (!isAccepted(line)) ++rejected;
        }
        EXPECT_GT(rejected, 1'000);
    }
}

}  // namespace
}  // namespace kovra
