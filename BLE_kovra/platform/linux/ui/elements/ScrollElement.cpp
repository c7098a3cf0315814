#include "BLE_kovra/platform/linux/ui/elements/ScrollElement.h"

#include <QScrollBar>
#include <QStyle>
#include <algorithm>

#include "BLE_kovra/platform/linux/ui/elements/LabelledButton.h"
#include "BLE_kovra/platform/linux/ui/style/Points.h"

namespace kovra {

namespace {

constexpr double besideTheBar = 8;
constexpr double leastOpening = 44;  // a row and a half, so that one sees that there is more

}  // namespace

ScrollElement::ScrollElement(const Site& site)
    : Element(site), area_(std::make_unique<QScrollArea>(&site.host)), surface_(new Surface) {
    area_->setFrameShape(QFrame::NoFrame);
    area_->setFocusPolicy(Qt::NoFocus);
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area_->setWidget(surface_);
    area_->viewport()->setAutoFillBackground(false);
    surface_->setAutoFillBackground(false);
    QObject::connect(area_->verticalScrollBar(), &QScrollBar::valueChanged, area_.get(),
                     [this] { this->site().actions.scrolled(); });
}

void ScrollElement::showKind(const View& view, const TextStyle& style, std::uint64_t heard) {
    children_.show(*this, view.children, Site{*surface_, site().actions, site().isInControl}, style, heard);
    surface_->setElement(children_.first());
    area_->show();
}

void ScrollElement::addTexts(QStringList& texts) const {
    for (const auto& child : children_) child->addTexts(texts);
}

void ScrollElement::addWidgets(std::vector<QWidget*>& widgets) const {
    widgets.push_back(area_.get());
    for (const auto& child : children_) child->addWidgets(widgets);
}

Wish ScrollElement::kindWidth() {
    Element* child = children_.first();
    return {child == nullptr ? 0 : child->width().least, child == nullptr ? 0 : child->width().ideal, true};
}

Wish ScrollElement::kindHeight(int width) {
    Element* child = children_.first();
    const int ideal = child == nullptr ? 0 : child->height(width).ideal;
    return {std::min(ideal, pixels(leastOpening)), ideal, false};
}

void ScrollElement::placeKind(const QRect& place) {
    Element* child = children_.first();
    const bool fits = child == nullptr || child->height(place.width()).ideal <= place.height();
    const int width = fits ? place.width() : besideBar(place.width());
    const int height = child == nullptr ? 0 : child->height(width).ideal;
    // Beside the bar there is room enough for the ring.
    area_->setGeometry(place.adjusted(0, 0, fits ? ringSpace : 0, 0));
    area_->setVerticalScrollBarPolicy(fits ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAlwaysOn);
    surface_->resize(width + ringSpace, height);
    if (child != nullptr) child->place({0, 0, width, height});
}

int ScrollElement::besideBar(int width) const {
    const int bar = area_->style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, area_->verticalScrollBar());
    return std::max(0, width - bar - pixels(besideTheBar));
}

}  // namespace kovra
