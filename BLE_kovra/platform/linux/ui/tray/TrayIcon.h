#pragma once

#include <QObject>
#include <QString>
#include <QSystemTrayIcon>

#include "BLE_kovra/platform/linux/ui/tray/TrayMenu.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// The icon in a tray that embeds windows (XEmbed). A click with the left or the right button opens the menu. The
// toolkit docks the icon again after the tray restarts.
class TrayIcon : public QObject {
  public:
    explicit TrayIcon(const SendToResident& send);

    void show(const ShowTray& tray);

  private:
    void activated(QSystemTrayIcon::ActivationReason reason);
    bool eventFilter(QObject* object, QEvent* event) override;

    QString name_;  // for screen readers
    QSystemTrayIcon icon_;
    TrayMenu menu_;
};

}  // namespace kovra
