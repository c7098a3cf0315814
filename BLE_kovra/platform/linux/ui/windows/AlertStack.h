#pragma once

#include <QObject>
#include <cstdint>
#include <memory>
#include <vector>

#include "BLE_kovra/platform/linux/ui/windows/AlertWindow.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

class QWindow;

namespace kovra {

// The alerts that are open, one above the other. The topmost comes to the front, and while there is one it alone of the
// program's windows takes input; menus and the icon in the tray go on. One that was answered is gone at once, and the
// one below takes input again.
class AlertStack : public QObject {
  public:
    explicit AlertStack(SendToResident send);
    ~AlertStack() override;

    void show(const ShowAlerts& shown);

  private:
    struct Open {
        std::uint64_t number;
        std::unique_ptr<AlertWindow> window;  // hidden once it was answered
    };

    AlertWindow* topmost() const;
    void bringTopmostToFront(const std::string& activationToken = {}) const;
    bool blocks(const QWindow& window) const;
    bool eventFilter(QObject* object, QEvent* event) override;

    SendToResident send_;
    std::vector<Open> open_;
};

}  // namespace kovra
