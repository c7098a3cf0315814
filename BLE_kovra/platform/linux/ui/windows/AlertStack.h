#pragma once

#include <QObject>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "BLE_kovra/platform/linux/ui/windows/AlertWindow.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

class QWindow;

namespace kovra {

// The stack of open alerts. The topmost comes to the front and blocks input to all other windows of the program, except
// menus and the tray icon. An answered alert is hidden at once, and the one below it accepts input again.
class AlertStack : public QObject {
  public:
    explicit AlertStack(SendToResident send);
    ~AlertStack() override;

    void show(const ShowAlerts& shown);

  private:
    struct Open {
        std::uint64_t number;
        std::unique_ptr<AlertWindow> window;  // hidden once it is answered
    };

    AlertWindow* topmost() const;
    void bringTopmostToFront(const std::string& activationToken = {}) const;
    bool blocks(const QWindow& window) const;
    bool eventFilter(QObject* object, QEvent* event) override;

    SendToResident send_;
    std::vector<Open> open_;
    std::optional<std::uint64_t> front_;  // of the last ShowAlerts
};

}  // namespace kovra
