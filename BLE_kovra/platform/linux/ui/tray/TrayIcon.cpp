#include "BLE_kovra/platform/linux/ui/tray/TrayIcon.h"

#include <QColor>
#include <QCoreApplication>
#include <QCursor>
#include <QEvent>
#include <QTextDocument>
#include <QWidget>

#include "BLE_kovra/platform/linux/ui/tray/DrawingIcon.h"

namespace kovra {

namespace {

// Escapes a text that looks like HTML, since the toolkit would interpret it in a tool tip.
QString plain(const QString& text) { return Qt::mightBeRichText(text) ? text.toHtmlEscaped() : text; }

}  // namespace

TrayIcon::TrayIcon(const SendToResident& send) : menu_([send](std::size_t position) { send(ItemChosen{position}); }) {
    connect(&icon_, &QSystemTrayIcon::activated, this, [this](auto reason) { activated(reason); });
    QCoreApplication::instance()->installEventFilter(this);
}

void TrayIcon::show(const ShowTray& tray) {
    DrawingColors colors;
    if (tray.imageIsTemplate) {
        colors.ink = QColor(tray.ink);
        if (tray.outline) colors.outline = QColor(*tray.outline);
    }
    icon_.setIcon(tray.image ? drawingIcon(*tray.image, colors) : QIcon());
    name_ = QString::fromStdString(tray.toolTip);
    icon_.setToolTip(plain(name_));
    menu_.show(tray.menu);
    if (!icon_.isVisible()) icon_.show();
}

void TrayIcon::activated(QSystemTrayIcon::ActivationReason reason) {
    if (reason == QSystemTrayIcon::MiddleClick) return;
    const QRect geometry = icon_.geometry();
    menu_.popUp(geometry.isValid() ? geometry : QRect(QCursor::pos(), QSize(1, 1)));
}

// Names the icon's window for screen readers, which announce its title. The toolkit creates a new window for each tray.
bool TrayIcon::eventFilter(QObject* object, QEvent* event) {
    const bool mayChangeName = event->type() == QEvent::Show || event->type() == QEvent::ToolTipChange;
    if (mayChangeName && object->objectName() == QLatin1String("QSystemTrayIconSys")) {
        if (auto* window = qobject_cast<QWidget*>(object)) window->setWindowTitle(name_);
    }
    return QObject::eventFilter(object, event);
}

}  // namespace kovra
