#pragma once

#include <QTimer>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/linux/ui/elements/Surface.h"
#include "BLE_kovra/platform/linux/ui/windows/ElementTree.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// The settings window, which shows a view. Closing only hides it.
//
// The window has the requested content size. It is taller if a text would be truncated otherwise, and lower if it would
// not fit on the screen and its list can shrink.
class ViewWindow : public Surface, private UserActions {
  public:
    // Sends ControlChanged, LinkFollowed, WindowPlaced, WindowClosed, SettingsWanted and
    // QuitWanted.
    explicit ViewWindow(SendToResident send);
    ~ViewWindow() override;

    // Shows the message's content in the window. The window comes to the front the first time and whenever `front`
    // changes. It moves to the place in the message only the first time.
    void showWindow(const ShowWindow& shown);

  private:
    std::uint64_t changed(std::vector<std::string> path, std::variant<bool, std::string> value) override;
    void followed(std::vector<std::string> path) override;
    void scrolled() override { sendPlaceLater(); }

    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void changeEvent(QEvent* event) override;

    void setStyleMask(unsigned mask);
    void showContent();
    QSize fittingSize();
    void comeToFront(bool isFirst);
    void moveTo(const std::optional<Point>& position);
    WindowPlace place() const;
    void sendPlaceLater();
    void sendPlace();

    SendToResident send_;
    ElementTree elements_{*this, *this};
    std::optional<ShowWindow> shown_;
    WindowPlace place_;         // the last one sent or received
    QTimer placeTimer_;         // runs until the place has not changed for `settleTime`
    std::uint64_t number_ = 0;  // number of the user's last change
};

}  // namespace kovra
