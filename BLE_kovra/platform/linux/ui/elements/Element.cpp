#include "BLE_kovra/platform/linux/ui/elements/Element.h"

#include <algorithm>
#include <utility>

#include "BLE_kovra/platform/linux/ui/style/Points.h"

namespace kovra {

namespace {

SizeHint fixed(double length) { return {pixels(length), pixels(length), false}; }

SizeHint withFrame(const SizeHint& content, const std::optional<double>& length, const std::optional<double>& maximum) {
    if (length) return fixed(*length);
    if (!maximum) return content;
    const int limit = pixels(*maximum);
    return {std::min(content.minimum, limit), std::min(content.preferred, limit),
            content.expands || *maximum == Frame::unbounded};
}

SizeHint withPadding(const SizeHint& content, int by) {
    return {content.minimum + by, content.preferred + by, content.expands};
}

}  // namespace

void Element::show(const View& view, const TextStyle& inherited, std::uint64_t acknowledged) {
    kind_ = view.kind.index();
    modifiers_ = view.modifiers;
    showContentOf(view, inherited.inside(modifiers_), acknowledged);
}

void Element::setKey(const Element* parent, std::string key) {
    parent_ = parent;
    key_ = std::move(key);
}

std::vector<std::string> Element::path() const {
    std::vector<std::string> path;
    for (const Element* each = this; each->parent_ != nullptr; each = each->parent_) path.push_back(each->key_);
    std::reverse(path.begin(), path.end());
    return path;
}

SizeHint Element::widthHint(std::size_t count) {
    if (count == 0) return contentWidth();
    const SizeHint content = widthHint(count - 1);
    const Modifier& modifier = modifiers_[count - 1];
    if (const auto* padding = std::get_if<Padding>(&modifier))
        return withPadding(content, 2 * pixels(padding->horizontal));
    if (const auto* frame = std::get_if<Frame>(&modifier)) return withFrame(content, frame->width, frame->maxWidth);
    const auto* size = std::get_if<FixedSize>(&modifier);
    if (size != nullptr && size->horizontal) return {content.preferred, content.preferred, false};
    return content;
}

SizeHint Element::heightHint(std::size_t count, int width) {
    if (count == 0) return contentHeight(width);
    const Modifier& modifier = modifiers_[count - 1];
    if (const auto* padding = std::get_if<Padding>(&modifier)) {
        const int inside = std::max(0, width - 2 * pixels(padding->horizontal));
        return withPadding(heightHint(count - 1, inside), 2 * pixels(padding->vertical));
    }
    if (const auto* frame = std::get_if<Frame>(&modifier)) {
        const int inside = frame->width ? pixels(*frame->width) : width;
        return withFrame(heightHint(count - 1, inside), frame->height, frame->maxHeight);
    }
    const SizeHint content = heightHint(count - 1, width);
    const auto* size = std::get_if<FixedSize>(&modifier);
    if (size != nullptr && size->vertical) return {content.preferred, content.preferred, false};
    return content;
}

void Element::place(std::size_t count, const QRect& rect) {
    if (count == 0) return placeContent(rect);
    const Modifier& modifier = modifiers_[count - 1];
    if (const auto* padding = std::get_if<Padding>(&modifier)) {
        const int x = pixels(padding->horizontal);
        const int y = pixels(padding->vertical);
        return place(count - 1, rect.adjusted(x, y, -x, -y));
    }
    const auto* frame = std::get_if<Frame>(&modifier);
    if (frame == nullptr) return place(count - 1, rect);
    const SizeHint horizontal = widthHint(count - 1);
    const int width = horizontal.expands ? rect.width() : std::min(horizontal.preferred, rect.width());
    const SizeHint vertical = heightHint(count - 1, width);
    const int height = vertical.expands ? rect.height() : std::min(vertical.preferred, rect.height());
    const int x = frame->alignment == Alignment::center ? (rect.width() - width) / 2 : 0;
    place(count - 1, {rect.x() + x, rect.y() + (rect.height() - height) / 2, width, height});
}

}  // namespace kovra
