#pragma once

#include <variant>
#include <vector>

#include "BLE_kovra/platform/View.h"

namespace kovra {

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
