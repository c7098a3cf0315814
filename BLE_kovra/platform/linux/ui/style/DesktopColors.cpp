#include "BLE_kovra/platform/linux/ui/style/DesktopColors.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QEvent>

#include "BLE_kovra/platform/linux/ui/style/TextStyle.h"

namespace kovra {

namespace {

const QString connectionName = QStringLiteral("ble-kovra-colors");
const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
// The value of the setting for dark windows; 0 means no preference, 2 light ones.
constexpr unsigned dark = 1;
constexpr int longestWait = 100;  // in milliseconds

// The method Read wraps the value in a variant of its own.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value;
}

}  // namespace

DesktopColors::DesktopColors() {
    if (qEnvironmentVariableIsEmpty("XDG_CURRENT_DESKTOP")) return;
    qApp->installEventFilter(this);
    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
    bus.connect(portal, path, settings, QStringLiteral("SettingChanged"), this, SLOT(settingChanged(QDBusMessage)));
    QDBusMessage read = QDBusMessage::createMethodCall(portal, path, settings, QStringLiteral("Read"));
    read << appearance << colorScheme;
    read.setAutoStartService(false);
    const QDBusMessage answer = bus.call(read, QDBus::Block, longestWait);
    if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty())
        prefer(unwrapped(answer.arguments().constFirst()).toUInt() == dark);
}

DesktopColors::~DesktopColors() { QDBusConnection::disconnectFromBus(connectionName); }

void DesktopColors::settingChanged(const QDBusMessage& signal) {
    const QVariantList values = signal.arguments();
    if (values.size() == 3 && values[0] == appearance && values[1] == colorScheme)
        prefer(unwrapped(values[2]).toUInt() == dark);
}

bool DesktopColors::eventFilter(QObject* watched, QEvent* event) {
    // The toolkit's theme may change its colors again after the user's preference has arrived.
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange)
        QMetaObject::invokeMethod(this, &DesktopColors::apply, Qt::QueuedConnection);
    return false;
}

void DesktopColors::prefer(bool darkIsPreferred) {
    darkIsPreferred_ = darkIsPreferred;
    apply();
}

void DesktopColors::apply() {
    if (darkIsPreferred_ && !isDark(QApplication::palette())) {
        isApplied_ = true;
        QApplication::setPalette(darkColors());
    } else if (!darkIsPreferred_ && isApplied_) {
        isApplied_ = false;
        QApplication::setPalette(QPalette());  // the theme's own
    }
}

QPalette darkColors() {
    QPalette colors(QColor(0x3A, 0x3A, 0x3A), QColor(0x24, 0x24, 0x24));
    colors.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x1E));
    colors.setColor(QPalette::AlternateBase, QColor(0x2E, 0x2E, 0x2E));
    colors.setColor(QPalette::Highlight, QColor(0x35, 0x84, 0xE4));
    colors.setColor(QPalette::HighlightedText, Qt::white);
    colors.setColor(QPalette::Link, QColor(0x78, 0xAE, 0xED));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        colors.setColor(QPalette::Disabled, role, QColor(0x91, 0x91, 0x91));
    return colors;
}

}  // namespace kovra
