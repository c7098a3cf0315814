#include "BLE_kovra/platform/linux/ui/windows/ViewRealiser.h"

#include <algorithm>
#include <iterator>

namespace kovra {

namespace {

using Widgets = std::vector<QPointer<QWidget>>;

// Of the control that was at `position`: the next one that is still there, else the one before it.
QWidget* neighbour(const Widgets& before, Widgets::const_iterator position) {
    const auto isThere = [](const QPointer<QWidget>& each) {
        return each && (each->focusPolicy() & Qt::TabFocus) != 0;
    };
    const auto next = std::find_if(position, before.end(), isThere);
    if (next != before.end()) return *next;
    const auto previous = std::find_if(std::make_reverse_iterator(position), before.rend(), isThere);
    return previous == before.rend() ? nullptr : previous->data();
}

}  // namespace

void ViewRealiser::show(const View& view, std::uint64_t heard) {
    const auto focused = std::find(widgets_.begin(), widgets_.end(), surface_.window()->focusWidget());
    const bool hadFocus = focused != widgets_.end();
    if (root_ && root_->isFor(view))
        root_->show(view, TextStyle(), heard);
    else
        root_ = makeElement(view, Site{surface_, actions_}, TextStyle(), heard);
    surface_.setElement(root_.get());
    if (hadFocus && focused->isNull()) {
        if (QWidget* next = neighbour(widgets_, focused)) next->setFocus();
    }
    orderWidgets();
}

// The keyboard and screen readers go through the widgets as the eye does.
void ViewRealiser::orderWidgets() {
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

void ViewRealiser::layOut(const QSize& room) {
    if (!root_) return;
    const int width = std::min(root_->width().ideal, room.width());
    const int height = std::min(root_->height(width).ideal, room.height());
    root_->place({(room.width() - width) / 2, (room.height() - height) / 2, width, height});
}

int ViewRealiser::leastHeight(int width) {
    return root_ ? root_->height(std::min(root_->width().ideal, width)).least : 0;
}

}  // namespace kovra
