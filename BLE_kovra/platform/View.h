#pragma once

#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kovra {

// The content of a window as a value: a tree of texts, controls and stacks that arrange them. A front end renders it
// with the desktop's own controls. Lengths are in points. Texts are plain, without markup and mnemonics.
struct View;

enum class Alignment { leading, center };

// The desktop's text styles and colors by role. `standard` applies to a text without a font.
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

// A check box. Its only child is the label. `set` receives the state that the user chose.
struct Toggle {
    bool isOn = false;
    std::function<void(bool isOn)> set;
};

// A group of radio buttons with a title. `select` receives the tag of the option that the user chose, even if it was
// already selected.
struct Picker {
    struct Option {
        std::string title;
        std::string tag;  // unique among the options
        bool operator==(const Option&) const = default;
    };
    std::string title;
    std::vector<Option> options;
    std::string selection;  // the tag of the selected option
    std::function<void(const std::string& tag)> select;
};

// A link. When the user clicks it, the desktop opens its destination.
struct Link {
    std::string title;
    std::string destination;  // a URL
    bool operator==(const Link&) const = default;
};

struct Divider {
    bool operator==(const Divider&) const = default;
};

// An empty view that takes the remaining space of its stack.
struct Spacer {
    bool operator==(const Spacer&) const = default;
};

// A row or a column of its children. Without a spacing, the desktop's default applies.
struct Stack {
    enum class Axis { horizontal, vertical };
    Axis axis = Axis::vertical;
    Alignment alignment = Alignment::center;  // across the axis
    std::optional<double> spacing;
    bool operator==(const Stack&) const = default;
};

// A view that scrolls its only child vertically. It is never taller than the child.
struct ScrollView {
    bool operator==(const ScrollView&) const = default;
};

// The modifiers of a view. FontModifier and ForegroundColor also apply to its descendants.
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
    double horizontal = 0;  // at the left, and at the right
    double vertical = 0;    // at the top, and at the bottom
    bool operator==(const Padding&) const = default;
};
// The size of a view. A width or height that is not set is that of the content.
struct Frame {
    static constexpr double unbounded = std::numeric_limits<double>::infinity();
    std::optional<double> width = std::nullopt;
    std::optional<double> height = std::nullopt;
    std::optional<double> maxWidth = std::nullopt;
    std::optional<double> maxHeight = std::nullopt;
    Alignment alignment = Alignment::center;
    bool operator==(const Frame&) const = default;
};
// Gives a text its full size in the chosen directions. With `vertical` alone the text wraps at its width and is never
// truncated.
struct FixedSize {
    bool horizontal = false;
    bool vertical = false;
    bool operator==(const FixedSize&) const = default;
};
using Modifier = std::variant<FontModifier, ForegroundColor, Padding, Frame, FixedSize>;

struct View {
    using Kind = std::variant<Text, Circle, Toggle, Picker, Link, Divider, Spacer, Stack, ScrollView>;

    Kind kind;
    std::vector<View> children;       // the children of a stack, the only child of a scroll view, or a toggle's label
    std::vector<Modifier> modifiers;  // the innermost first
    // Identifies the view among its siblings. If the id is empty, the position identifies the view.
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

// The style of a view's texts. If several modifiers set a font or a color, the innermost one applies.
struct TextRole {
    Font font = Font::standard;
    bool bold = false;
    Color color = Color::primary;
    bool operator==(const TextRole&) const = default;

    // Returns this style as the modifiers change it for the views inside them.
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
