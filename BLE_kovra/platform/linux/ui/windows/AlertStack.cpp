#include "BLE_kovra/platform/linux/ui/windows/AlertStack.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <QWindow>
#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/ui/windows/BringToFront.h"
#include "BLE_kovra/platform/linux/ui/windows/CenterByFrame.h"

namespace kovra {

namespace {

// How long an alert may surprise a user who is typing.
constexpr auto surprise = std::chrono::milliseconds(500);

// How soon after a choice in a menu of this program its alert opens.
constexpr auto reaction = std::chrono::seconds(2);

bool isKey(QEvent::Type type) { return type == QEvent::KeyPress || type == QEvent::ShortcutOverride; }

// Returns whether the event begins an action of the user. An alert blocks only such events, so an action that began
// before the alert opened may finish.
bool startsInput(QEvent::Type type) {
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

AlertStack::AlertStack(SendToResident send, Clock clock) : send_(std::move(send)), clock_(std::move(clock)) {
    QCoreApplication::instance()->installEventFilter(this);
}
AlertStack::~AlertStack() = default;

void AlertStack::show(const ShowAlerts& shown) {
    const AlertWindow* before = topmost();
    const bool isRequested = std::exchange(front_, shown.front) != shown.front;
    std::string token;
    std::vector<Open> open;
    for (const ShowAlerts::Open& listed : shown.alerts) {
        const auto known = std::find_if(open_.begin(), open_.end(),
                                        [&](const Open& each) { return each.window && each.number == listed.number; });
        if (known != open_.end()) {
            open.push_back(std::move(*known));
            if (isRequested) token = listed.activationToken;
            if (!token.empty()) open.back().isRequested = true;
            continue;
        }
        const auto onAnswered = [this, number = listed.number](std::optional<std::size_t> button) {
            bringTopmostToFront();
            send_(AlertAnswered{number, button});
        };
        open.push_back({.number = listed.number,
                        .window = std::make_unique<AlertWindow>(listed.alert, onAnswered, send_),
                        .isRequested = !listed.activationToken.empty() || isUserHere()});
        AlertWindow& window = *open.back().window;
        window.adjustSize();
        centerByFrame(window);
        window.show();
        token = listed.activationToken;
    }
    open_.swap(open);
    open.clear();  // destroys the alerts that are no longer listed
    if (isRequested || topmost() != before) bringTopmostToFront(token);
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

AlertStack::Open* AlertStack::alertOf(const QWindow& window) {
    const auto found = std::find_if(open_.begin(), open_.end(),
                                    [&](const Open& each) { return each.window->windowHandle() == &window; });
    return found == open_.end() ? nullptr : &*found;
}

bool AlertStack::isUnexpected(const Open& alert) const {
    return !alert.isRequested && alert.activated && clock_() - *alert.activated < surprise;
}

bool AlertStack::isUserHere() const { return lastInput_ && clock_() - *lastInput_ < reaction; }

bool AlertStack::eventFilter(QObject* object, QEvent* event) {
    const bool isActivation = event->type() == QEvent::FocusIn;
    if (!isActivation && !startsInput(event->type())) return false;
    const auto* window = qobject_cast<QWindow*>(object);
    if (window == nullptr) return false;
    Open* const alert = alertOf(*window);
    if (alert == nullptr && !isActivation) lastInput_ = clock_();
    // A desktop may activate the window while show() is still running. Then the first key begins the time.
    if (alert != nullptr && !alert->activated && (isActivation || isKey(event->type()))) alert->activated = clock_();
    if (blocks(*window)) {
        // Defer the call, because the toolkit is still processing the event.
        QTimer::singleShot(0, this, [this] { bringTopmostToFront(); });
    } else if (alert == nullptr || !isKey(event->type()) || !isUnexpected(*alert)) {
        return false;
    }
    if (isActivation) return false;
    // An accepted ShortcutOverride triggers no shortcut. An ignored close event closes nothing.
    event->setAccepted(event->type() == QEvent::ShortcutOverride);
    return true;
}

}  // namespace kovra
