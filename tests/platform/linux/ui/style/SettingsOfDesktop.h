#pragma once

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QMap>
#include <QString>
#include <QThread>
#include <QVariant>
#include <utility>

namespace kovra {

// A substitute for the settings of a desktop's portal, in a thread of its own, since whoever reads them waits.
class SettingsOfDesktop : public QDBusVirtualObject {
  public:
    // The values by "GROUP KEY".
    using Values = QMap<QString, QVariant>;

    explicit SettingsOfDesktop(Values values) : values_(std::move(values)) {
        moveToThread(&thread_);
        thread_.start();
        EXPECT_TRUE(bus_.registerVirtualObject(path, this));
        EXPECT_TRUE(bus_.registerService("org.freedesktop.portal.Desktop"));
    }
    ~SettingsOfDesktop() override {
        thread_.quit();
        thread_.wait();
        QDBusConnection::disconnectFromBus(name);
    }
    Q_DISABLE_COPY_MOVE(SettingsOfDesktop)

    void change(const QString& group, const QString& key, const QVariant& value) {
        QDBusMessage signal = QDBusMessage::createSignal(path, settings, "SettingChanged");
        signal << group << key << QVariant::fromValue(QDBusVariant(value));
        EXPECT_TRUE(bus_.send(signal));
    }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.interface() != settings || message.member() != "Read") return false;
        const QString asked = message.arguments()[0].toString() + ' ' + message.arguments()[1].toString();
        if (!values_.contains(asked))
            return bus.send(message.createErrorReply("org.freedesktop.portal.Error.NotFound", asked));
        const QDBusVariant value{values_[asked]};
        return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(value)))));
    }

  private:
    static inline const QString name = "desktop";
    static inline const QString path = "/org/freedesktop/portal/desktop";
    static inline const QString settings = "org.freedesktop.portal.Settings";

    const Values values_;
    QThread thread_;
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
};

}  // namespace kovra
