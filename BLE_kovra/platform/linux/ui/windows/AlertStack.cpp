#include "BLE_kovra/platform/linux/ui/windows/AlertStack.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <QWindow>
#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/ui/windows/Front.h"

namespace kovra {

namespace {

// With which input begins. What has begun before may end.
bool isInput(QEvent::Type type) {
    switch (type) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::Wheel:
        case QEvent::KeyPress:
        case QEvent::ShortcutOverride:
        case QEvent::TouchBegin:
        case QEvent::TabletPress:
        case QEvent::NativeGesture:
        case QEvent::ContextMenu:
        case QEvent::DragEnter:
        case QEvent::Close:
            return true;
        default:
            return false;
    }
}

}  // namespace

AlertStack::AlertStack(SendToResident send) : send_(std::move(send)) {
    QCoreApplication::instance()->installEventFilter(this);
}
AlertStack::~AlertStack() = default;

void AlertStack::show(const ShowAlerts& shown) {
    const AlertWindow* before = topmost();
    std::string token;
    std::vector<Open> open;
    for (const ShowAlerts::Open& named : shown.alerts) {
        const auto known = std::find_if(open_.begin(), open_.end(),
                                        [&](const Open& each) { return each.window && each.number == named.number; });
        if (known != open_.end()) {
            open.push_back(std::move(*known));
            continue;
        }
        const auto onAnswered = [this, number = named.number](std::optional<std::size_t> button) {
            bringTopmostToFront();
            send_(AlertAnswered{number, button});
        };
        open.push_back({named.number, std::make_unique<AlertWindow>(named.alert, onAnswered)});
        open.back().window->show();
        token = named.activationToken;
    }
    open_.swap(open);
    open.clear();  // those that are not named any more
    if (topmost() != before) bringTopmostToFront(token);
}

AlertWindow* AlertStack::topmost() const {
    const auto found =
        std::find_if(open_.rbegin(), open_.rend(), [](const Open& each) { return each.window->isVisible(); });
    return found == open_.rend() ? nullptr : found->window.get();
}

void AlertStack::bringTopmostToFront(const std::string& activationToken) const {
    if (AlertWindow* window = topmost()) bringToFront(*window, activationToken);
}

bool AlertStack::blocks(const QWindow& window) const {
    const AlertWindow* alert = topmost();
    const bool isOrdinary = window.type() == Qt::Window || window.type() == Qt::Dialog;
    return alert != nullptr && isOrdinary && !window.flags().testFlag(Qt::BypassWindowManagerHint) &&
           &window != alert->windowHandle();
}

bool AlertStack::eventFilter(QObject* object, QEvent* event) {
    const bool isActivation = event->type() == QEvent::FocusIn;
    if (!isActivation && !isInput(event->type())) return false;
    const auto* window = qobject_cast<QWindow*>(object);
    if (window == nullptr || !blocks(*window)) return false;
    // Later, since the toolkit is in the middle of what it does for the event.
    QTimer::singleShot(0, this, [this] { bringTopmostToFront(); });
    if (isActivation) return false;
    // So that a key press is no shortcut and a close closes nothing.
    event->setAccepted(event->type() == QEvent::ShortcutOverride);
    return true;
}

}  // namespace kovra
