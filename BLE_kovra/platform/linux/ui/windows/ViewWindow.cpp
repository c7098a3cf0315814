#include "BLE_kovra/platform/linux/ui/windows/ViewWindow.h"

#include <QAccessibleWidget>
#include <QEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QWindow>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "BLE_kovra/platform/Window.h"
#include "BLE_kovra/platform/linux/ui/style/KeyCommand.h"
#include "BLE_kovra/platform/linux/ui/style/Points.h"
#include "BLE_kovra/platform/linux/ui/windows/BringToFront.h"
#include "BLE_kovra/platform/linux/ui/windows/CenterByFrame.h"
#include "BLE_kovra/platform/linux/ui/windows/KeyRequest.h"
#include "BLE_kovra/platform/linux/ui/windows/RefuseMaximizing.h"

namespace kovra {

namespace {

constexpr double titleBar = 40;  // points: approximate height of the title bar
constexpr int reachable = 40;    // pixels that have to be on a screen, so that the user can move the window

// A place is sent when it has not changed for this time. A window manager moves a new window several times, and the
// intermediate places of a drag do not matter.
constexpr std::chrono::milliseconds settleTime{200};

Qt::WindowFlags flags(unsigned styleMask) {
    Qt::WindowFlags flags = Qt::Window | Qt::CustomizeWindowHint;
    if ((styleMask & WindowStyle::titled) != 0) flags |= Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
    if ((styleMask & WindowStyle::closable) != 0) flags |= Qt::WindowCloseButtonHint;
    if ((styleMask & WindowStyle::miniaturizable) != 0) flags |= Qt::WindowMinimizeButtonHint;
    return flags;
}

// Returns whether a window can query and choose its position. On Wayland it can do neither.
bool hasPosition() { return !QGuiApplication::platformName().startsWith(QLatin1String("wayland")); }

bool isReachable(const QRect& window) {
    const QRect top(window.left(), window.top(), window.width(), reachable);
    const auto screens = QGuiApplication::screens();
    return std::any_of(screens.begin(), screens.end(), [&top](const QScreen* screen) {
        const QRect seen = screen->availableGeometry() & top;
        return seen.width() >= reachable && seen.height() >= reachable / 2;
    });
}

// Returns the accessible object with which screen readers announce the widget as a window.
QAccessibleInterface* makeAccessibleWindow(const QString&, QObject* object) {
    auto* window = dynamic_cast<ViewWindow*>(object);
    return window == nullptr ? nullptr : new QAccessibleWidget(window, QAccessible::Window);
}

}  // namespace

ViewWindow::ViewWindow(SendToResident send) : send_(std::move(send)) {
    QAccessible::removeFactory(makeAccessibleWindow);
    QAccessible::installFactory(makeAccessibleWindow);  // the newest factory is queried first
    placeTimer_.setSingleShot(true);
    placeTimer_.setInterval(settleTime);
    connect(&placeTimer_, &QTimer::timeout, this, [this] { sendPlace(); });
}

ViewWindow::~ViewWindow() = default;

std::uint64_t ViewWindow::changed(std::vector<std::string> path, std::variant<bool, std::string> value) {
    send_(ControlChanged{++number_, std::move(path), std::move(value)});
    return number_;
}

void ViewWindow::followed(std::vector<std::string> path) { send_(LinkFollowed{std::move(path)}); }

void ViewWindow::showWindow(const ShowWindow& shown) {
    const bool isFirst = !shown_;
    const bool comesToFront = isFirst || shown_->front != shown.front;
    if (isFirst || shown_->styleMask != shown.styleMask) setStyleMask(shown.styleMask);
    shown_ = shown;
    number_ = std::max(number_, shown.acknowledged);
    setWindowTitle(QString::fromStdString(shown.title));
    showContent();
    if (comesToFront) comeToFront(isFirst);
}

void ViewWindow::setStyleMask(unsigned mask) {
    const bool wasVisible = isVisible();
    setWindowFlags(flags(mask));  // hides the window
    if (wasVisible) show();
}

void ViewWindow::showContent() {
    elements_.show(shown_->content, shown_->acknowledged);
    setFixedSize(fittingSize());
    elements_.layOut(size());
}

QSize ViewWindow::fittingSize() {
    const int width = pixels(shown_->contentSize.width);
    const int available = screen()->availableGeometry().height() - pixels(titleBar);
    return {width, std::max(elements_.minimumHeight(width), std::min(pixels(shown_->contentSize.height), available))};
}

void ViewWindow::comeToFront(bool isFirst) {
    if (isFirst) place_ = shown_->place;
    if (!isVisible()) moveTo(place_.position);
    if (isFirst && place_.isMinimised)
        showMinimized();
    else
        bringToFront(*this, shown_->activationToken);
    if (!isFirst) return;
    if (auto* list = findChild<QScrollArea*>()) list->verticalScrollBar()->setValue(pixels(shown_->place.scroll));
}

void ViewWindow::moveTo(const std::optional<Point>& position) {
    if (!hasPosition()) return;
    if (position) {
        const QPoint last(static_cast<int>(std::lround(position->x)), static_cast<int>(std::lround(position->y)));
        if (isReachable({last, size()})) return move(last);
    }
    centerByFrame(*this);
}

WindowPlace ViewWindow::place() const {
    WindowPlace place = place_;
    if (hasPosition() && !placeTimer_.isActive()) {
        const QPoint corner = windowHandle()->framePosition();
        place.position = Point{double(corner.x()), double(corner.y())};
    }
    place.isMinimised = isMinimized();
    if (const auto* list = findChild<QScrollArea*>()) place.scroll = points(list->verticalScrollBar()->value());
    return place;
}

void ViewWindow::sendPlaceLater() {
    if (isVisible()) placeTimer_.start();
}

void ViewWindow::sendPlace() {
    const WindowPlace now = place();
    if (!isVisible() || now == place_) return;
    place_ = now;
    send_(WindowPlaced{now});
}

void ViewWindow::closeEvent(QCloseEvent* event) {
    // Hide the window instead of closing it: creating the native window again takes time.
    event->ignore();
    place_ = place();
    place_.isMinimised = false;
    placeTimer_.stop();
    hide();
    send_(WindowClosed{shown_->front, place_});
}

void ViewWindow::keyPressEvent(QKeyEvent* event) {
    const std::optional<KeyCommand> command = keyCommand(*event);
    if (!command)
        QWidget::keyPressEvent(event);
    else if (*command == KeyCommand::close)
        close();
    else
        send_(request(*command));
}

void ViewWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    sendPlaceLater();
}

void ViewWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    refuseMaximizing(*this, *event);
    if (event->type() == QEvent::WindowStateChange) sendPlaceLater();
    const bool isNewLook = event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange;
    if (isNewLook && shown_) showContent();
}

}  // namespace kovra
