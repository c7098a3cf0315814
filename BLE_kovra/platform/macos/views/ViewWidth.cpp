#include "BLE_kovra/platform/macos/views/ViewWidth.h"

#include <algorithm>
#include <variant>

namespace kovra {

namespace {

bool takesWidthUnmodified(const View& view) {
    const bool isOpen = std::holds_alternative<Circle>(view.kind) || std::holds_alternative<Divider>(view.kind) ||
                        std::holds_alternative<Spacer>(view.kind) || std::holds_alternative<ScrollView>(view.kind);
    return isOpen ||
           std::any_of(view.children.begin(), view.children.end(), [](const View& child) { return takesWidth(child); });
}

}  // namespace

bool takesWidth(const View& view) { return takesWidth(view, view.modifiers.size()); }

bool takesWidth(const View& view, std::size_t modifierCount) {
    if (modifierCount == 0) return takesWidthUnmodified(view);
    const Modifier& outermost = view.modifiers[modifierCount - 1];
    if (const auto* frame = std::get_if<Frame>(&outermost)) {
        if (frame->width) return false;
        if (frame->maxWidth == Frame::unbounded) return true;
    }
    const auto* size = std::get_if<FixedSize>(&outermost);
    return !(size != nullptr && size->horizontal) && takesWidth(view, modifierCount - 1);
}

std::optional<double> widthInside(const View& view, std::optional<double> around) {
    std::optional<double> width = around;
    for (std::size_t i = view.modifiers.size(); i > 0; --i) {
        const Modifier& modifier = view.modifiers[i - 1];
        if (const auto* frame = std::get_if<Frame>(&modifier)) {
            if (frame->width) width = frame->width;
            if (width && frame->maxWidth) width = std::min(*width, *frame->maxWidth);
        }
        const auto* padding = std::get_if<Padding>(&modifier);
        if (width && padding != nullptr) width = std::max(0.0, *width - 2 * padding->horizontal);
    }
    return width;
}

}  // namespace kovra
