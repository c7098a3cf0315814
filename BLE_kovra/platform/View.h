#pragma once

#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kovra {

// What a window shows, as a value: a tree that reads from top to bottom and says what is there and how it is arranged.
// A front end realises it with the desktop's own controls and decides nothing. Lengths are points. Texts are plain:
// no character in them is markup or marks a mnemonic.
struct View;

enum class Alignment { leading, center };

// The desktop's text styles and colours by role. `standard` is what a text has that is given no font.
enum class Font { standard, headline, body, subheadline, caption, caption2 };
enum class Color { primary, secondary, green, gray };

struct Text {
    std::string content;
    bool operator==(const Text&) const = default;
};

struct Circle {
    Color fill = Color::primary;
    double opacity = 1;  // from 0 to 1
    bool operator==(const Circle&) const = default;
};

// A check box with its label, the one child. `set` is given what the user made of it.
struct Toggle {
    bool isOn = false;
    std::function<void(bool isOn)> set;
};

// A group of radio buttons with a title. `select` is given the tag of what the user chose, also when it was the choice
// already.
struct Picker {
    struct Option {
        std::string title;
        std::string tag;  // of its own among the options
        bool operator==(const Option&) const = default;
    };
    std::string title;
    std::vector<Option> options;
    std::string selection;  // the tag of one of them
    std::function<void(const std::string& tag)> select;
};

// A link; the desktop opens its destination.
struct Link {
    std::string title;
    std::string destination;  // a URL
    bool operator==(const Link&) const = default;
};

struct Divider {
    bool operator==(const Divider&) const = default;
};

// Takes what room there is left in its stack.
struct Spacer {
    bool operator==(const Spacer&) const = default;
};

// The children one after the other. Without a spacing it is the desktop's own.
struct Stack {
    enum class Axis { horizontal, vertical };
    Axis axis = Axis::vertical;
    Alignment alignment = Alignment::center;  // across the axis
    std::optional<double> spacing;
    bool operator==(const Stack&) const = default;
};

// Shows its one child through an opening, and scrolls it up and down with a scroll bar. It is no higher than the child.
struct ScrollView {
    bool operator==(const ScrollView&) const = default;
};

// Modifiers, for a view and all in it.
struct FontModifier {
    Font font = Font::standard;
    bool bold = false;
    bool operator==(const FontModifier&) const = default;
};
struct ForegroundColor {
    Color color = Color::primary;
    bool operator==(const ForegroundColor&) const = default;
};
struct Padding {
    double horizontal = 0;  // at each side
    double vertical = 0;    // at the top, and at the bottom
    bool operator==(const Padding&) const = default;
};
// What is not given is as the view in it has it.
struct Frame {
    static constexpr double unbounded = std::numeric_limits<double>::infinity();
    std::optional<double> width = std::nullopt;
    std::optional<double> height = std::nullopt;
    std::optional<double> maxWidth = std::nullopt;
    std::optional<double> maxHeight = std::nullopt;
    Alignment alignment = Alignment::center;
    bool operator==(const Frame&) const = default;
};
// A text that is as large as it needs: vertical alone, it wraps to its width and is never cut.
struct FixedSize {
    bool horizontal = false;
    bool vertical = false;
    bool operator==(const FixedSize&) const = default;
};
using Modifier = std::variant<FontModifier, ForegroundColor, Padding, Frame, FixedSize>;

struct View {
    using Kind = std::variant<Text, Circle, Toggle, Picker, Link, Divider, Spacer, Stack, ScrollView>;

    Kind kind;
    std::vector<View> children;       // of a stack; the one of a scroll view; a toggle's label
    std::vector<Modifier> modifiers;  // the innermost first
    // Known by this among its siblings, wherever it stands; where empty, by its position.
    std::string id;

    View&& identified(std::string by) && {
        id = std::move(by);
        return std::move(*this);
    }
    View&& font(Font font, bool bold = false) && { return std::move(*this).with(FontModifier{font, bold}); }
    View&& foregroundColor(Color color) && { return std::move(*this).with(ForegroundColor{color}); }
    View&& padding(double length) && { return std::move(*this).with(Padding{length, length}); }
    View&& verticalPadding(double length) && { return std::move(*this).with(Padding{0, length}); }
    View&& frame(const Frame& frame) && { return std::move(*this).with(frame); }
    View&& fixedSize(bool horizontal, bool vertical) && {
        return std::move(*this).with(FixedSize{horizontal, vertical});
    }

  private:
    View&& with(Modifier modifier) && {
        modifiers.push_back(modifier);
        return std::move(*this);
    }
};

// How a view's texts look, as the views around it and its own modifiers say; the innermost counts.
struct TextRole {
    Font font = Font::standard;
    bool bold = false;
    Color color = Color::primary;
    bool operator==(const TextRole&) const = default;

    // As it is inside these modifiers.
    TextRole inside(const std::vector<Modifier>& modifiers) const {
        const FontModifier* innermostFont = nullptr;
        const ForegroundColor* innermostColor = nullptr;
        for (const Modifier& each : modifiers) {
            if (innermostFont == nullptr) innermostFont = std::get_if<FontModifier>(&each);
            if (innermostColor == nullptr) innermostColor = std::get_if<ForegroundColor>(&each);
        }
        TextRole role = *this;
        if (innermostFont != nullptr) {
            role.font = innermostFont->font;
            role.bold = innermostFont->bold;
        }
        if (innermostColor != nullptr) role.color = innermostColor->color;
        return role;
    }
};

}  // namespace kovra
