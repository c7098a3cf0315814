#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/linux/tray/StatusNotifierRig.h"
#include "tests/support/Seeds.h"

namespace kovra {
namespace {

struct Method {
    const char* path;
    const char* interface;
    const char* name;
    const char* types;
};
constexpr const char* menu = "com.canonical.dbusmenu";
constexpr const char* item = "org.kde.StatusNotifierItem";
constexpr const char* properties = "org.freedesktop.DBus.Properties";
constexpr std::array methods{Method{"/MenuBar", menu, "GetLayout", "iias"},
                             Method{"/MenuBar", menu, "GetGroupProperties", "aias"},
                             Method{"/MenuBar", menu, "GetProperty", "is"},
                             Method{"/MenuBar", menu, "Event", "isvu"},
                             Method{"/MenuBar", menu, "EventGroup", "a(isvu)"},
                             Method{"/MenuBar", menu, "AboutToShow", "i"},
                             Method{"/MenuBar", menu, "AboutToShowGroup", "ai"},
                             Method{"/MenuBar", properties, "Get", "ss"},
                             Method{"/MenuBar", properties, "GetAll", "s"},
                             Method{"/StatusNotifierItem", item, "Activate", "ii"},
                             Method{"/StatusNotifierItem", item, "SecondaryActivate", "ii"},
                             Method{"/StatusNotifierItem", item, "ContextMenu", "ii"},
                             Method{"/StatusNotifierItem", item, "Scroll", "is"},
                             Method{"/StatusNotifierItem", item, "ProvideXdgActivationToken", "s"},
                             Method{"/StatusNotifierItem", properties, "Get", "ss"},
                             Method{"/StatusNotifierItem", properties, "Set", "ssv"},
                             Method{"/StatusNotifierItem", properties, "GetAll", "s"},
                             Method{"/", "org.example.Unknown", "NoSuchMethod", ""}};
constexpr std::array words{"",
                           "clicked",
                           "opened",
                           "hovered",
                           "label",
                           "enabled",
                           "toggle-state",
                           "type",
                           "visible",
                           "vertical",
                           "IconName",
                           "IconPixmap",
                           "ToolTip",
                           "Menu",
                           "com.canonical.dbusmenu",
                           "org.kde.StatusNotifierItem",
                           "%s%n",
                           "\xF0\x9F\x96\xB1"};

// A client that makes random calls, some of them valid.
class Stranger {
  public:
    Stranger(Panel& panel, std::uint32_t seed) : panel_(panel), random_(seed) {}

    // Makes a random call and returns the reply. Any reply is correct, but there must be one.
    std::string call() {
        const Method method = one(methods);
        const bool isOrderly = chance(60);
        sd_bus_message* made = nullptr;
        EXPECT_GE(sd_bus_message_new_method_call(panel_.bus(), &made, panel_.item().c_str(),
                                                 isOrderly ? method.path : one(methods).path,
                                                 isOrderly ? method.interface : one(methods).interface, method.name),
                  0);
        const BusMessage message(made);
        const std::string types = chance(80) ? method.types : someTypes(3);
        BusWriter writer(made);
        isLong_ = chance(3);
        size_ = isLong_ ? 20'000 : 8;
        write(writer, types);
        EXPECT_GE(writer.result(), 0) << types;
        return panel_.send(made);
    }

  private:
    bool chance(int percent) { return number(0, 99) < percent; }
    int number(int least, int most) { return std::uniform_int_distribution(least, most)(random_); }
    template <typename List>
    typename List::value_type one(const List& list) {
        return list.at(static_cast<std::size_t>(number(0, static_cast<int>(list.size()) - 1)));
    }
    std::int32_t someInteger() {
        if (chance(60)) return number(-1, 9);
        return chance(50) ? std::numeric_limits<std::int32_t>::min() : std::numeric_limits<std::int32_t>::max();
    }
    // Long texts do not occur in long lists. Such a message would exceed the size limit of the bus, which would
    // disconnect this client.
    std::string someText() { return !isLong_ && chance(2) ? std::string(300'000, 'a') : std::string(one(words)); }
    std::string someType(int depth) {
        switch (number(0, depth > 0 ? 7 : 4)) {
            case 0:
                return "i";
            case 1:
                return "u";
            case 2:
                return "s";
            case 3:
                return "b";
            case 4:
                return "v";
            case 5:
                return "a" + someType(depth - 1);
            case 6:
                return "(" + someType(depth - 1) + someType(depth - 1) + ")";
            default:
                return "a{s" + someType(depth - 1) + "}";
        }
    }
    std::string someTypes(int most) {
        std::string types;
        for (int count = number(0, most); count > 0; --count) types += someType(3);
        return types;
    }

    // Returns the index after the complete D-Bus type that starts at `begin`.
    static std::size_t end(std::string_view types, std::size_t begin) {
        if (types[begin] == 'a') return end(types, begin + 1);
        if (types[begin] != '(' && types[begin] != '{') return begin + 1;
        const char close = types[begin] == '(' ? ')' : '}';
        std::size_t at = begin + 1;
        while (types[at] != close) at = end(types, at);
        return at + 1;
    }
    void write(BusWriter& writer, std::string_view types) {
        for (std::size_t begin = 0; begin < types.size();) {
            const std::size_t after = end(types, begin);
            writeOne(writer, types.substr(begin, after - begin));
            begin = after;
        }
    }
    void writeOne(BusWriter& writer, std::string_view type) {
        const std::string inside(type.size() > 2 ? type.substr(1, type.size() - 2) : "");
        switch (type.front()) {
            case 'i':
                writer.integer(someInteger());
                break;
            case 'u':
                writer.natural(static_cast<std::uint32_t>(someInteger()));
                break;
            case 's':
                writer.text(someText());
                break;
            case 'b':
                writer.boolean(chance(50));
                break;
            case 'v': {
                const std::string of = nesting_ < 5 ? someType(1) : "i";
                ++nesting_;
                writer.openVariant(of.c_str());
                writeOne(writer, of);
                writer.close();
                --nesting_;
                break;
            }
            case 'a': {
                const std::string of(type.substr(1));
                const int most = size_;
                size_ = 2;  // nested containers stay small
                writer.openArray(of.c_str());
                for (int count = number(0, most); count > 0; --count) writeOne(writer, of);
                writer.close();
                size_ = most;
                break;
            }
            case '(':
                writer.openStruct(inside.c_str());
                write(writer, inside);
                writer.close();
                break;
            default:
                writer.openEntry(inside.c_str());
                write(writer, inside);
                writer.close();
        }
    }

    Panel& panel_;
    std::mt19937 random_;
    bool isLong_ = false;
    int size_ = 8;
    int nesting_ = 0;
};

TEST(StatusNotifierFrontFuzzTest, RepliesToAnyCallAndWorksAfterwards) {
    for (const std::uint32_t seed : fixedAndFreshSeeds(3)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        StatusNotifierRig rig;
        rig.showInPanel();
        const std::string before = rig.panel->layout();
        Stranger stranger(*rig.panel, seed);
        int answers = 0;
        for (int call = 0; call < 600; ++call) {
            const std::string answer = stranger.call();
            ASSERT_NE(answer, "no answer");
            if (!answer.starts_with("error")) ++answers;
        }
        EXPECT_GT(answers, 40);  // otherwise the calls do not reach the item
        rig.takeDone();
        EXPECT_EQ(rig.panel->layout(), before);
        rig.panel->click(3);
        EXPECT_EQ(rig.takeDone(), "Settings; ");
        rig.panel->signals();
        rig.showIcon("slashed", "on");
        rig.settle();
        EXPECT_EQ(rig.panel->signals(), "NewIcon; NewToolTip; ");
    }
}

}  // namespace
}  // namespace kovra
