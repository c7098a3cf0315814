#include "BLE_kovra/platform/linux/ui/elements/Element.h"

#include <algorithm>
#include <utility>

#include "BLE_kovra/platform/linux/ui/style/Points.h"

namespace kovra {

namespace {

Wish fixed(double length) { return {pixels(length), pixels(length), false}; }

Wish framed(const Wish& inner, const std::optional<double>& length, const std::optional<double>& longest) {
    if (length) return fixed(*length);
    if (!longest) return inner;
    const int most = pixels(*longest);
    return {std::min(inner.least, most), std::min(inner.ideal, most), inner.takesRest || *longest == Frame::unbounded};
}

Wish extended(const Wish& inner, int by) { return {inner.least + by, inner.ideal + by, inner.takesRest}; }

}  // namespace

void Element::show(const View& view, const TextStyle& around, std::uint64_t heard) {
    kind_ = view.kind.index();
    modifiers_ = view.modifiers;
    showKind(view, around.inside(modifiers_), heard);
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

Wish Element::width(std::size_t count) {
    if (count == 0) return kindWidth();
    const Wish inner = width(count - 1);
    const Modifier& modifier = modifiers_[count - 1];
    if (const auto* padding = std::get_if<Padding>(&modifier)) return extended(inner, 2 * pixels(padding->horizontal));
    if (const auto* frame = std::get_if<Frame>(&modifier)) return framed(inner, frame->width, frame->maxWidth);
    const auto* size = std::get_if<FixedSize>(&modifier);
    if (size != nullptr && size->horizontal) return {inner.ideal, inner.ideal, false};
    return inner;
}

Wish Element::height(std::size_t count, int width) {
    if (count == 0) return kindHeight(width);
    const Modifier& modifier = modifiers_[count - 1];
    if (const auto* padding = std::get_if<Padding>(&modifier)) {
        const int inside = std::max(0, width - 2 * pixels(padding->horizontal));
        return extended(height(count - 1, inside), 2 * pixels(padding->vertical));
    }
    if (const auto* frame = std::get_if<Frame>(&modifier)) {
        const int inside = frame->width ? pixels(*frame->width) : width;
        return framed(height(count - 1, inside), frame->height, frame->maxHeight);
    }
    const Wish inner = height(count - 1, width);
    const auto* size = std::get_if<FixedSize>(&modifier);
    if (size != nullptr && size->vertical) return {inner.ideal, inner.ideal, false};
    return inner;
}

void Element::place(std::size_t count, const QRect& place) {
    if (count == 0) return placeKind(place);
    const Modifier& modifier = modifiers_[count - 1];
    if (const auto* padding = std::get_if<Padding>(&modifier)) {
        const int x = pixels(padding->horizontal);
        const int y = pixels(padding->vertical);
        return this->place(count - 1, place.adjusted(x, y, -x, -y));
    }
    const auto* frame = std::get_if<Frame>(&modifier);
    if (frame == nullptr) return this->place(count - 1, place);
    const Wish across = width(count - 1);
    const int innerWidth = across.takesRest ? place.width() : std::min(across.ideal, place.width());
    const Wish down = height(count - 1, innerWidth);
    const int innerHeight = down.takesRest ? place.height() : std::min(down.ideal, place.height());
    const int x = frame->alignment == Alignment::center ? (place.width() - innerWidth) / 2 : 0;
    this->place(count - 1, {place.x() + x, place.y() + (place.height() - innerHeight) / 2, innerWidth, innerHeight});
}

}  // namespace kovra
