#include "BLE_kovra/platform/linux/ui/style/PortalSettings.h"

#include <QDBusConnectionInterface>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QEventLoop>
#include <QTimer>
#include <utility>

namespace kovra {

namespace {

const QString connectionName = QStringLiteral("ble-kovra-settings");
const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");

// The method Read wraps the value in a variant of its own.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value;
}

}  // namespace

PortalSettings::PortalSettings(std::vector<Setting> settings, std::chrono::milliseconds longestWait)
    : settings_(std::move(settings)) {
    if (qEnvironmentVariableIsEmpty("XDG_CURRENT_DESKTOP")) return;
    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
    if (!bus.isConnected()) return;
    bus.connect(portal, path, interface, QStringLiteral("SettingChanged"), this, SLOT(settingChanged(QDBusMessage)));
    const bool isRunning = bus.interface()->isServiceRegistered(portal);
    for (const Setting& setting : settings_) read(bus, setting);
    if (!isRunning) return;
    QEventLoop waiting;
    QTimer::singleShot(longestWait, &waiting, &QEventLoop::quit);
    connect(this, &PortalSettings::answered, &waiting, &QEventLoop::quit);
    waiting.exec(QEventLoop::ExcludeUserInputEvents);
}

PortalSettings::~PortalSettings() { QDBusConnection::disconnectFromBus(connectionName); }

void PortalSettings::read(QDBusConnection& bus, const Setting& setting) {
    QDBusMessage call = QDBusMessage::createMethodCall(portal, path, interface, QStringLiteral("Read"));
    call << setting.group << setting.key;
    ++unanswered_;
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, &setting, answer] {
        const QDBusPendingReply<QDBusVariant> value = *answer;
        answer->deleteLater();
        if (value.isValid()) setting.changed(unwrapped(value.value().variant()));
        if (--unanswered_ == 0) emit answered();
    });
}

void PortalSettings::settingChanged(const QDBusMessage& signal) {
    const QVariantList values = signal.arguments();
    for (const Setting& setting : settings_) {
        if (values.size() == 3 && values[0] == setting.group && values[1] == setting.key)
            setting.changed(unwrapped(values[2]));
    }
}

}  // namespace kovra
