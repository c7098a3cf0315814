#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariant>
#include <chrono>
#include <functional>
#include <vector>

namespace kovra {

// Reads settings of the user from the desktop's portal (org.freedesktop.portal.Settings), and follows their changes.
//
// The portal may have to be started first, as on X11, where nothing else may need it. Its answer then arrives when it
// runs. Nothing is asked where no desktop is named (XDG_CURRENT_DESKTOP).
class PortalSettings : public QObject {
    Q_OBJECT

  public:
    struct Setting {
        QString group;
        QString key;
        // Receives the value when it is known, and after each change. It is not called while the value is unknown.
        std::function<void(const QVariant& value)> changed;
    };

    // If the portal is running, waits for its answers, so that the first window opens with them, but no longer than
    // `longestWait`.
    explicit PortalSettings(std::vector<Setting> settings,
                            std::chrono::milliseconds longestWait = std::chrono::milliseconds(100));
    ~PortalSettings() override;
    Q_DISABLE_COPY_MOVE(PortalSettings)

  signals:
    void answered();

  public slots:
    void settingChanged(const QDBusMessage& signal);

  private:
    void read(QDBusConnection& bus, const Setting& setting);

    const std::vector<Setting> settings_;
    int unanswered_ = 0;
};

}  // namespace kovra
