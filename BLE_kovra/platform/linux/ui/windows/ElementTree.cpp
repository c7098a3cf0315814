#include "BLE_kovra/platform/linux/ui/windows/ElementTree.h"

#include <algorithm>
#include <iterator>

namespace kovra {

namespace {

using Widgets = std::vector<QPointer<QWidget>>;

// Returns the first control from `position` on that still exists and accepts the focus. If there is none, returns the
// last such control before `position`, or null.
QWidget* neighbor(const Widgets& before, Widgets::const_iterator position) {
    const auto takesFocus = [](const QPointer<QWidget>& each) {
        return each && (each->focusPolicy() & Qt::TabFocus) != 0;
    };
    const auto next = std::find_if(position, before.end(), takesFocus);
    if (next != before.end()) return *next;
    const auto previous = std::find_if(std::make_reverse_iterator(position), before.rend(), takesFocus);
    return previous == before.rend() ? nullptr : previous->data();
}

}  // namespace

void ElementTree::show(const View& view, std::uint64_t acknowledged) {
    const auto focused = std::find(widgets_.begin(), widgets_.end(), surface_.window()->focusWidget());
    const bool hadFocus = focused != widgets_.end();
    if (root_ && root_->isFor(view))
        root_->show(view, TextStyle(), acknowledged);
    else
        root_ = makeElement(view, Site{surface_, actions_}, TextStyle(), acknowledged);
    surface_.setElement(root_.get());
    if (hadFocus && focused->isNull()) {
        if (QWidget* next = neighbor(widgets_, focused)) next->setFocus();
    }
    orderWidgets();
}

// Makes the Tab key and screen readers follow the visual order.
void ElementTree::orderWidgets() {
    std::vector<QWidget*> widgets;
    root_->addWidgets(widgets);
    if (std::equal(widgets.begin(), widgets.end(), widgets_.begin(), widgets_.end())) return;
    widgets_.assign(widgets.begin(), widgets.end());
    QWidget* before = nullptr;
    for (QWidget* each : widgets) {
        each->raise();
        if (each->focusPolicy() == Qt::NoFocus) continue;
        if (before != nullptr) QWidget::setTabOrder(before, each);
        before = each;
    }
}

void ElementTree::layOut(const QSize& size) {
    if (!root_) return;
    const int width = std::min(root_->widthHint().preferred, size.width());
    const int height = std::min(root_->heightHint(width).preferred, size.height());
    root_->place({(size.width() - width) / 2, (size.height() - height) / 2, width, height});
}

int ElementTree::minimumHeight(int width) {
    return root_ ? root_->heightHint(std::min(root_->widthHint().preferred, width)).minimum : 0;
}

}  // namespace kovra
