#pragma once

#include <QTimer>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/linux/ui/elements/Surface.h"
#include "BLE_kovra/platform/linux/ui/windows/ViewRealiser.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// The one window, with a view in it. Made once: who closes it hides it.
//
// Its size is its content's, in points. It is higher where a text would be cut otherwise, and no higher than the screen
// while the list in it can give way.
class ViewWindow : public Surface, private UserActions {
  public:
    // Sends ControlChanged, LinkFollowed, WindowPlaced, WindowClosed and QuitWanted.
    explicit ViewWindow(SendToResident send);
    ~ViewWindow() override;

    // The first time, and whenever `front` is another number, it comes to the front. Its place is taken over the first
    // time.
    void showWindow(const ShowWindow& told);

  private:
    std::uint64_t changed(std::vector<std::string> path, std::variant<bool, std::string> value) override;
    void followed(std::vector<std::string> path) override;
    void scrolled() override { tellPlaceSoon(); }

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
    void tellPlaceSoon();
    void tellPlace();

    SendToResident send_;
    ViewRealiser realiser_{*this, *this};
    std::optional<ShowWindow> told_;
    WindowPlace place_;         // as it was told last, or was taken over
    QTimer settling_;           // runs while the place is changing
    std::uint64_t number_ = 0;  // of the user's last change
};

}  // namespace kovra
