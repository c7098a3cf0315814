#pragma once

#include <QObject>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "BLE_kovra/platform/linux/ui/windows/AlertWindow.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

class QWindow;

namespace kovra {

// The stack of open alerts. The topmost comes to the front and blocks input to all other windows of the program, except
// menus and the tray icon. An answered alert is hidden at once, and the one below it accepts input again.
//
// An alert without an activation token may open while the user is typing in another program, and some desktops give it
// the keyboard. Such an alert ignores keys that are pressed within half a second of its first activation, so that what
// was meant for the other program does not answer it. This does not apply if the user has just clicked or typed in
// another window of this program, as in its own menu.
class AlertStack : public QObject {
  public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    explicit AlertStack(SendToResident send, Clock clock = std::chrono::steady_clock::now);
    ~AlertStack() override;

    void show(const ShowAlerts& shown);

  private:
    struct Open {
        std::uint64_t number;
        std::unique_ptr<AlertWindow> window;  // hidden once it is answered
        bool isRequested;                     // by the user
        // Of its first activation.
        std::optional<std::chrono::steady_clock::time_point> activated = std::nullopt;
    };

    AlertWindow* topmost() const;
    void bringTopmostToFront(const std::string& activationToken = {}) const;
    bool blocks(const QWindow& window) const;
    Open* alertOf(const QWindow& window);
    bool isUnexpected(const Open& alert) const;
    bool isUserHere() const;
    bool eventFilter(QObject* object, QEvent* event) override;

    SendToResident send_;
    Clock clock_;
    std::optional<std::chrono::steady_clock::time_point> lastInput_;  // in another window than an alert
    std::vector<Open> open_;
    std::optional<std::uint64_t> front_;  // of the last ShowAlerts
};

}  // namespace kovra
