#pragma once

#include <cmath>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/View.h"

namespace kovra {

// A view as text: one line per view with its modifiers, the innermost first, and its children indented below.
class ViewDump {
  public:
    static std::string of(const View& view) {
        ViewDump dump;
        dump.write(view, 0);
        return dump.text_.str();
    }

  private:
    void write(const View& view, int depth) {
        text_ << std::string(static_cast<std::size_t>(depth) * 2, ' ');
        if (!view.id.empty()) text_ << "<" << view.id << "> ";
        std::visit([this](const auto& kind) { say(kind); }, view.kind);
        for (const Modifier& modifier : view.modifiers) {
            text_ << " |";
            std::visit([this](const auto& each) { say(each); }, modifier);
        }
        text_ << '\n';
        for (const View& child : view.children) write(child, depth + 1);
    }

    void say(const Text& text) { text_ << '"' << text.content << '"'; }
    void say(const Circle& circle) {
        text_ << "circle " << word(circle.fill);
        if (circle.opacity != 1) text_ << " at " << circle.opacity;
    }
    void say(const Toggle& toggle) { text_ << (toggle.isOn ? "[x]" : "[ ]"); }
    void say(const Picker& picker) {
        text_ << '"' << picker.title << '"';
        for (const Picker::Option& option : picker.options) {
            text_ << (option.tag == picker.selection ? " (o) \"" : " ( ) \"") << option.title << "\" " << option.tag;
        }
    }
    void say(const Link& link) { text_ << "link \"" << link.title << "\" to " << link.destination; }
    void say(const Divider&) { text_ << "---"; }
    void say(const Spacer&) { text_ << "spacer"; }
    void say(const Stack& stack) {
        text_ << (stack.axis == Stack::Axis::vertical ? "column " : "row ") << word(stack.alignment);
        if (stack.spacing) text_ << " spacing " << *stack.spacing;
    }
    void say(const ScrollView&) { text_ << "scroll"; }

    void say(const FontModifier& font) {
        static constexpr const char* words[] = {"standard", "headline", "body", "subheadline", "caption", "caption2"};
        text_ << ' ' << words[static_cast<int>(font.font)] << (font.bold ? " bold" : "");
    }
    void say(const ForegroundColor& color) { text_ << ' ' << word(color.color); }
    void say(const Padding& padding) { text_ << " padding " << padding.horizontal << " by " << padding.vertical; }
    void say(const Frame& frame) {
        text_ << " frame";
        bound("width", frame.width);
        bound("height", frame.height);
        bound("max width", frame.maxWidth);
        bound("max height", frame.maxHeight);
        if (frame.alignment != Alignment::center) text_ << ' ' << word(frame.alignment);
    }
    void say(const FixedSize& size) {
        text_ << " fixed" << (size.horizontal ? " horizontally" : "") << (size.vertical ? " vertically" : "");
    }
    void bound(const char* name, const std::optional<double>& length) {
        if (!length) return;
        text_ << ' ' << name << ' ';
        if (std::isinf(*length))
            text_ << "unbounded";
        else
            text_ << *length;
    }

    static const char* word(Color color) {
        static constexpr const char* words[] = {"primary", "secondary", "green", "gray"};
        return words[static_cast<int>(color)];
    }
    static const char* word(Alignment alignment) { return alignment == Alignment::center ? "center" : "leading"; }

    std::ostringstream text_;
};

// Returns a copy of the view at this path. Each step is the id or the position of a child. Throws if there is no such
// view.
inline View viewAt(const View& root, const std::vector<std::string>& path) {
    const View* view = &root;
    for (const std::string& step : path) {
        const View* next = nullptr;
        for (std::size_t i = 0; i < view->children.size(); ++i) {
            const View& child = view->children[i];
            if (step == (child.id.empty() ? std::to_string(i) : child.id)) next = &child;
        }
        if (next == nullptr) throw std::out_of_range("no view at " + step);
        view = next;
    }
    return *view;
}

}  // namespace kovra
