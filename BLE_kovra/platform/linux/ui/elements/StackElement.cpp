#include "BLE_kovra/platform/linux/ui/elements/StackElement.h"

#include <algorithm>

#include "BLE_kovra/platform/linux/ui/style/Points.h"

namespace kovra {

namespace {

// Along the axis of the stack, the sizes of the children add up.
SizeHint sumOf(const std::vector<SizeHint>& hints, int gaps) {
    SizeHint all{gaps, gaps, false};
    for (const SizeHint& each : hints) {
        all.minimum += each.minimum;
        all.preferred += each.preferred;
        all.expands |= each.expands;
    }
    return all;
}

// Across the axis, the largest child determines the size.
SizeHint largestOf(const std::vector<SizeHint>& hints) {
    SizeHint all;
    for (const SizeHint& each : hints) {
        all.minimum = std::max(all.minimum, each.minimum);
        all.preferred = std::max(all.preferred, each.preferred);
        all.expands |= each.expands;
    }
    return all;
}

}  // namespace

void StackElement::showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) {
    stack_ = std::get<Stack>(view.kind);
    children_.show(*this, view.children, site(), style, acknowledged);
}

void StackElement::paint(QPainter& painter) {
    for (const auto& child : children_) child->paint(painter);
}

void StackElement::addTexts(QStringList& texts) const {
    for (const auto& child : children_) child->addTexts(texts);
}

void StackElement::addWidgets(std::vector<QWidget*>& widgets) const {
    for (const auto& child : children_) child->addWidgets(widgets);
}

SizeHint StackElement::contentWidth() {
    std::vector<SizeHint> hints;
    for (const auto& child : children_) hints.push_back(child->widthHint());
    return isHorizontal() ? sumOf(hints, gaps()) : largestOf(hints);
}

SizeHint StackElement::contentHeight(int width) {
    const std::vector<int> widths = childWidths(width);
    std::vector<SizeHint> hints;
    for (const auto& child : children_) hints.push_back(child->heightHint(widths[hints.size()]));
    return isHorizontal() ? largestOf(hints) : sumOf(hints, gaps());
}

void StackElement::placeContent(const QRect& rect) {
    const std::vector<int> widths = childWidths(rect.width());
    std::vector<SizeHint> heights;
    for (const auto& child : children_) heights.push_back(child->heightHint(widths[heights.size()]));
    std::vector<int> lengths;
    if (!isHorizontal()) lengths = share(rect.height() - gaps(), heights);

    QPoint at = rect.topLeft();
    std::size_t i = 0;
    for (const auto& child : children_) {
        QRect place(at, QSize(widths[i], isHorizontal() ? crossSize(heights[i], rect.height()) : lengths[i]));
        if (isHorizontal())
            place.translate(0, crossOffset(rect.height(), place.height()));
        else
            place.translate(crossOffset(rect.width(), place.width()), 0);
        child->place(place);
        at += isHorizontal() ? QPoint(place.width() + spacing(), 0) : QPoint(0, place.height() + spacing());
        ++i;
    }
}

std::vector<int> StackElement::childWidths(int width) {
    std::vector<SizeHint> hints;
    for (const auto& child : children_) hints.push_back(child->widthHint());
    if (isHorizontal()) return share(width - gaps(), hints);
    std::vector<int> widths;
    for (const SizeHint& hint : hints) widths.push_back(crossSize(hint, width));
    return widths;
}

int StackElement::crossSize(const SizeHint& hint, int space) const {
    return hint.expands ? space : std::min(hint.preferred, space);
}

int StackElement::crossOffset(int space, int length) const {
    return stack_.alignment == Alignment::center ? (space - length) / 2 : 0;
}

int StackElement::spacing() const {
    if (stack_.spacing) return pixels(*stack_.spacing);
    return defaultSpacing(site().host);
}

int StackElement::gaps() const { return children_.size() < 2 ? 0 : static_cast<int>(children_.size() - 1) * spacing(); }

}  // namespace kovra
