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
#include "BLE_kovra/platform/linux/ui/style/Points.h"
#include "BLE_kovra/platform/linux/ui/windows/Front.h"

namespace kovra {

namespace {

constexpr double titleBar = 40;  // points, about; to be left free of the screen's height
constexpr int graspable = 40;    // pixels of a window that have to be on a screen, so that it can be moved

// A place counts when it has stood for this long. While a window manager takes up a window it has several, none of
// which it keeps; and while the user moves it nobody needs to know each.
constexpr std::chrono::milliseconds whileItMoves{200};

constexpr QKeyCombination closing(Qt::Key_Escape);
constexpr QKeyCombination closingToo(Qt::ControlModifier, Qt::Key_W);
constexpr QKeyCombination quitting(Qt::ControlModifier, Qt::Key_Q);
constexpr quint32 placeOfQ = 24;  // as X and Wayland number the keys
constexpr quint32 placeOfW = 25;

// Of a layout without Latin letters the keys count by their places.
QKeyCombination latin(const QKeyEvent& event) {
    const bool isLetterElsewhere = event.key() > Qt::Key_AsciiTilde && event.key() < Qt::Key_Escape;
    if (isLetterElsewhere && event.nativeScanCode() == placeOfQ) return QKeyCombination(event.modifiers(), Qt::Key_Q);
    if (isLetterElsewhere && event.nativeScanCode() == placeOfW) return QKeyCombination(event.modifiers(), Qt::Key_W);
    return event.keyCombination();
}

Qt::WindowFlags flags(unsigned styleMask) {
    Qt::WindowFlags flags = Qt::Window | Qt::CustomizeWindowHint;
    if ((styleMask & WindowStyle::titled) != 0) flags |= Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
    if ((styleMask & WindowStyle::closable) != 0) flags |= Qt::WindowCloseButtonHint;
    if ((styleMask & WindowStyle::miniaturizable) != 0) flags |= Qt::WindowMinimizeButtonHint;
    return flags;
}

// On Wayland a window neither knows nor chooses where it is.
bool hasPosition() { return !QGuiApplication::platformName().startsWith(QLatin1String("wayland")); }

bool isWithinReach(const QRect& window) {
    const QRect top(window.left(), window.top(), window.width(), graspable);
    const auto screens = QGuiApplication::screens();
    return std::any_of(screens.begin(), screens.end(), [&top](const QScreen* screen) {
        const QRect seen = screen->availableGeometry() & top;
        return seen.width() >= graspable && seen.height() >= graspable / 2;
    });
}

// To a screen reader it is a window.
QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* window = dynamic_cast<ViewWindow*>(object);
    return window == nullptr ? nullptr : new QAccessibleWidget(window, QAccessible::Window);
}

}  // namespace

ViewWindow::ViewWindow(SendToResident send) : send_(std::move(send)) {
    QAccessible::removeFactory(makeAccessible);
    QAccessible::installFactory(makeAccessible);  // the newest is asked first
    settling_.setSingleShot(true);
    settling_.setInterval(whileItMoves);
    connect(&settling_, &QTimer::timeout, this, [this] { tellPlace(); });
}

ViewWindow::~ViewWindow() = default;

std::uint64_t ViewWindow::changed(std::vector<std::string> path, std::variant<bool, std::string> value) {
    send_(ControlChanged{++number_, std::move(path), std::move(value)});
    return number_;
}

void ViewWindow::followed(std::vector<std::string> path) { send_(LinkFollowed{std::move(path)}); }

void ViewWindow::showWindow(const ShowWindow& told) {
    const bool isFirst = !told_;
    const bool isToComeToFront = isFirst || told_->front != told.front;
    if (isFirst || told_->styleMask != told.styleMask) setStyleMask(told.styleMask);
    told_ = told;
    number_ = std::max(number_, told.heard);
    setWindowTitle(QString::fromStdString(told.title));
    showContent();
    if (isToComeToFront) comeToFront(isFirst);
}

void ViewWindow::setStyleMask(unsigned mask) {
    const bool wasVisible = isVisible();
    setWindowFlags(flags(mask));  // which hides it
    if (wasVisible) show();
}

void ViewWindow::showContent() {
    realiser_.show(told_->content, told_->heard);
    setFixedSize(fittingSize());
    realiser_.layOut(size());
}

QSize ViewWindow::fittingSize() {
    const int width = pixels(told_->contentSize.width);
    const int room = screen()->availableGeometry().height() - pixels(titleBar);
    return {width, std::max(realiser_.leastHeight(width), std::min(pixels(told_->contentSize.height), room))};
}

void ViewWindow::comeToFront(bool isFirst) {
    if (isFirst) place_ = told_->place;
    if (!isVisible()) moveTo(place_.position);
    if (isFirst && place_.isMinimised)
        showMinimized();
    else
        bringToFront(*this, told_->activationToken);
    if (!isFirst) return;
    if (auto* list = findChild<QScrollArea*>()) list->verticalScrollBar()->setValue(pixels(told_->place.scroll));
}

void ViewWindow::moveTo(const std::optional<Point>& position) {
    if (!hasPosition()) return;
    const QRect screen = this->screen()->availableGeometry();
    QPoint corner = screen.center() - rect().center();
    if (position) {
        const QPoint old(static_cast<int>(std::lround(position->x)), static_cast<int>(std::lround(position->y)));
        if (isWithinReach({old, size()})) corner = old;
    }
    move(corner);
}

WindowPlace ViewWindow::place() const {
    WindowPlace place = place_;
    if (hasPosition() && !settling_.isActive()) {
        const QPoint corner = windowHandle()->framePosition();
        place.position = Point{double(corner.x()), double(corner.y())};
    }
    place.isMinimised = isMinimized();
    if (const auto* list = findChild<QScrollArea*>()) place.scroll = points(list->verticalScrollBar()->value());
    return place;
}

void ViewWindow::tellPlaceSoon() {
    if (isVisible()) settling_.start();
}

void ViewWindow::tellPlace() {
    const WindowPlace now = place();
    if (!isVisible() || now == place_) return;
    place_ = now;
    send_(WindowPlaced{now});
}

void ViewWindow::closeEvent(QCloseEvent* event) {
    // Not closed but hidden: the desktop's side of a window that is closed goes, and takes time to be made again.
    event->ignore();
    place_ = place();
    place_.isMinimised = false;
    settling_.stop();
    hide();
    send_(WindowClosed{told_->front, place_});
}

void ViewWindow::keyPressEvent(QKeyEvent* event) {
    const QKeyCombination keys = latin(*event);
    if (keys == closing || keys == closingToo)
        close();
    else if (keys == quitting)
        send_(QuitWanted{});
    else
        QWidget::keyPressEvent(event);
}

void ViewWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    tellPlaceSoon();
}

void ViewWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange) tellPlaceSoon();
    const bool isOtherLook = event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange;
    if (isOtherLook && told_) showContent();
}

}  // namespace kovra
