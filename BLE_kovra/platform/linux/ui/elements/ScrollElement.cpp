#include "BLE_kovra/platform/linux/ui/elements/ScrollElement.h"

#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionSlider>
#include <algorithm>

#include "BLE_kovra/platform/linux/ui/elements/LabelledButton.h"
#include "BLE_kovra/platform/linux/ui/style/Points.h"
#include "BLE_kovra/platform/linux/ui/style/TextStyle.h"

namespace kovra {

namespace {

constexpr double barSpacing = 8;      // points
constexpr double minimumHeight = 44;  // points: a row and a half, so that the user sees that there is more

// A scroll bar that paints its handle itself. The style Fusion paints it in nearly the color of the groove.
class ScrollBar : public QScrollBar {
  public:
    using QScrollBar::QScrollBar;

  private:
    void paintEvent(QPaintEvent* event) override {
        QScrollBar::paintEvent(event);
        QStyleOptionSlider option;
        initStyleOption(&option);
        const QRect handle = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
        QPainter(this).fillRect(handle,
                                isSliderDown() ? palette().color(QPalette::WindowText) : handleColor(palette()));
    }
};

}  // namespace

ScrollElement::ScrollElement(const Site& site)
    : Element(site), area_(std::make_unique<QScrollArea>(&site.host)), surface_(new Surface) {
    area_->setFrameShape(QFrame::NoFrame);
    area_->setFocusPolicy(Qt::NoFocus);
    area_->setVerticalScrollBar(new ScrollBar);  // the area owns it
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area_->setWidget(surface_);
    area_->viewport()->setAutoFillBackground(false);
    surface_->setAutoFillBackground(false);
    QObject::connect(area_->verticalScrollBar(), &QScrollBar::valueChanged, area_.get(),
                     [this] { this->site().actions.scrolled(); });
}

void ScrollElement::showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) {
    children_.show(*this, view.children, Site{*surface_, site().actions, site().isInControl}, style, acknowledged);
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

SizeHint ScrollElement::contentWidth() {
    Element* child = children_.first();
    const SizeHint hint = child == nullptr ? SizeHint() : child->widthHint();
    return {hint.minimum, hint.preferred, true};
}

SizeHint ScrollElement::contentHeight(int width) {
    Element* child = children_.first();
    const int preferred = child == nullptr ? 0 : child->heightHint(width).preferred;
    return {std::min(preferred, pixels(minimumHeight)), preferred, false};
}

void ScrollElement::placeContent(const QRect& rect) {
    Element* child = children_.first();
    const bool fits = child == nullptr || child->heightHint(rect.width()).preferred <= rect.height();
    const int width = fits ? rect.width() : widthBesideBar(rect.width());
    const int height = child == nullptr ? 0 : child->heightHint(width).preferred;
    // The space beside the bar is enough for the focus ring.
    area_->setGeometry(rect.adjusted(0, 0, fits ? focusRingMargin : 0, 0));
    area_->setVerticalScrollBarPolicy(fits ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAlwaysOn);
    surface_->resize(width + focusRingMargin, height);
    if (child != nullptr) child->place({0, 0, width, height});
}

int ScrollElement::widthBesideBar(int width) const {
    const int bar = area_->style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, area_->verticalScrollBar());
    return std::max(0, width - bar - pixels(barSpacing));
}

}  // namespace kovra
