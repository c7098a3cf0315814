#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// A generator of random windows, alerts and user actions, with all kinds of views, modifiers and texts.
class RandomMessages {
  public:
    explicit RandomMessages(std::uint32_t seed) : random_(seed) {}

    ShowWindow window() {
        return {.title = text(),
                .styleMask = static_cast<unsigned>(number()),
                .contentSize = {length(), length()},
                .front = number(),
                .activationToken = text(),
                .place = place(),
                .acknowledged = number(),
                .content = view(5)};
    }
    ShowAlerts alerts() {
        ShowAlerts shown;
        for (auto left = below(4); left > 0; --left)
            shown.alerts.push_back({number(), text(), {text(), text(), texts()}});
        if (coin()) shown.front = number();
        return shown;
    }
    ToResident answer() {
        switch (below(8)) {
            case 0:
                return coin() ? ControlChanged{number(), texts(), coin()} : ControlChanged{number(), texts(), text()};
            case 1:
                return LinkFollowed{texts()};
            case 2:
                return WindowPlaced{place()};
            case 3:
                return WindowClosed{number(), place()};
            case 4:
                return AlertAnswered{number(), coin() ? std::optional<std::size_t>(number()) : std::nullopt};
            case 5:
                return Pong{number()};
            case 6:
                return SettingsWanted{};
            default:
                return QuitWanted{};
        }
    }

    View view(int levels) {
        View made{kind(), {}, {}, coin() ? text() : ""};
        if (levels > 0) {
            for (auto left = below(4); left > 0; --left) made.children.push_back(view(levels - 1));
        }
        for (auto left = below(4); left > 0; --left) made.modifiers.push_back(modifier());
        return made;
    }

    std::size_t below(std::size_t end) { return random_() % end; }
    bool coin() { return below(2) == 0; }

  private:
    std::uint64_t number() { return coin() ? below(10) : std::uint64_t{random_()} << 32 | random_(); }
    double length() { return coin() ? static_cast<double>(below(100)) : std::ldexp(random_(), -31) * 1e3 - 1e3; }
    std::string text() {
        static const std::vector<std::string> pieces{
            "", "a", "Мышь", "&", "<b>", "\"", "\\", "\n", "\0", "\x7F", "\xEF\xBF\xBF", "_", "\xF0\x9F\x96\xB1"};
        std::string made;
        for (auto left = below(5); left > 0; --left) made += pieces[below(pieces.size())];
        return made;
    }
    std::vector<std::string> texts() {
        std::vector<std::string> made(below(4));
        for (std::string& each : made) each = text();
        return made;
    }
    WindowPlace place() {
        WindowPlace made{.isMinimised = coin(), .scroll = length()};
        if (coin()) made.position = Point{length(), length()};
        return made;
    }
    std::optional<double> maybeLength() { return coin() ? std::optional(length()) : std::nullopt; }
    std::optional<double> largestLength() { return below(3) == 0 ? Frame::unbounded : maybeLength(); }
    Alignment alignment() { return coin() ? Alignment::leading : Alignment::center; }
    Color color() { return static_cast<Color>(below(4)); }
    Font font() { return static_cast<Font>(below(6)); }

    View::Kind kind() {
        switch (below(9)) {
            case 0:
                return Text{text()};
            case 1:
                return Circle{color(), length()};
            case 2:
                return Toggle{coin(), [](bool) {}};
            case 3: {
                Picker made{text(), {}, text(), [](const std::string&) {}};
                for (auto left = below(3); left > 0; --left) made.options.push_back({text(), text()});
                return made;
            }
            case 4:
                return Link{text(), text()};
            case 5:
                return Divider{};
            case 6:
                return Spacer{};
            case 7:
                return Stack{coin() ? Stack::Axis::horizontal : Stack::Axis::vertical, alignment(), maybeLength()};
            default:
                return ScrollView{};
        }
    }
    Modifier modifier() {
        switch (below(5)) {
            case 0:
                return FontModifier{font(), coin()};
            case 1:
                return ForegroundColor{color()};
            case 2:
                return Padding{length(), length()};
            case 3:
                return Frame{maybeLength(), maybeLength(), largestLength(), largestLength(), alignment()};
            default:
                return FixedSize{coin(), coin()};
        }
    }

    std::mt19937 random_;
};

}  // namespace kovra
