#include "BLE_kovra/platform/linux/ui/elements/StackElement.h"

#include <algorithm>

#include "BLE_kovra/platform/linux/ui/style/Points.h"

namespace kovra {

namespace {

// One after the other.
Wish inARow(const std::vector<Wish>& wishes, int gaps) {
    Wish all{gaps, gaps, false};
    for (const Wish& each : wishes) {
        all.least += each.least;
        all.ideal += each.ideal;
        all.takesRest |= each.takesRest;
    }
    return all;
}

// Side by side.
Wish widest(const std::vector<Wish>& wishes) {
    Wish all;
    for (const Wish& each : wishes) {
        all.least = std::max(all.least, each.least);
        all.ideal = std::max(all.ideal, each.ideal);
        all.takesRest |= each.takesRest;
    }
    return all;
}

}  // namespace

void StackElement::showKind(const View& view, const TextStyle& style, std::uint64_t heard) {
    stack_ = std::get<Stack>(view.kind);
    children_.show(*this, view.children, site(), style, heard);
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

Wish StackElement::kindWidth() {
    std::vector<Wish> wishes;
    for (const auto& child : children_) wishes.push_back(child->width());
    return isHorizontal() ? inARow(wishes, gaps()) : widest(wishes);
}

Wish StackElement::kindHeight(int width) {
    const std::vector<int> widths = childWidths(width);
    std::vector<Wish> wishes;
    for (const auto& child : children_) wishes.push_back(child->height(widths[wishes.size()]));
    return isHorizontal() ? widest(wishes) : inARow(wishes, gaps());
}

void StackElement::placeKind(const QRect& place) {
    const std::vector<int> widths = childWidths(place.width());
    std::vector<Wish> heights;
    for (const auto& child : children_) heights.push_back(child->height(widths[heights.size()]));
    std::vector<int> shared;
    if (!isHorizontal()) shared = share(place.height() - gaps(), heights);

    QPoint at = place.topLeft();
    std::size_t i = 0;
    for (const auto& child : children_) {
        QRect its(at, QSize(widths[i], isHorizontal() ? across(heights[i], place.height()) : shared[i]));
        if (isHorizontal())
            its.translate(0, offset(place.height(), its.height()));
        else
            its.translate(offset(place.width(), its.width()), 0);
        child->place(its);
        at += isHorizontal() ? QPoint(its.width() + spacing(), 0) : QPoint(0, its.height() + spacing());
        ++i;
    }
}

std::vector<int> StackElement::childWidths(int width) {
    std::vector<Wish> wishes;
    for (const auto& child : children_) wishes.push_back(child->width());
    if (isHorizontal()) return share(width - gaps(), wishes);
    std::vector<int> widths;
    for (const Wish& wish : wishes) widths.push_back(across(wish, width));
    return widths;
}

int StackElement::across(const Wish& wish, int room) const {
    return wish.takesRest ? room : std::min(wish.ideal, room);
}

int StackElement::offset(int room, int length) const {
    return stack_.alignment == Alignment::center ? (room - length) / 2 : 0;
}

int StackElement::spacing() const {
    if (stack_.spacing) return pixels(*stack_.spacing);
    return usualGap(site().host);
}

int StackElement::gaps() const { return children_.size() < 2 ? 0 : static_cast<int>(children_.size() - 1) * spacing(); }

}  // namespace kovra
