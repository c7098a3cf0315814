#include "BLE_kovra/platform/linux/ui/tray/RequestedMenu.h"

#include <algorithm>
#include <utility>

namespace kovra {

namespace {

using std::chrono::milliseconds;

constexpr std::chrono::seconds timeout{2};  // a request that is older opens nothing

// Pixels above and below the clicked position that the menu leaves free, so that a second click there chooses nothing.
constexpr int halfIcon = 12;

constexpr int largestCoordinate = 32'767;  // of a position on an X screen

milliseconds now() {
    return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

}  // namespace

RequestedMenu::RequestedMenu(SendToResident send) : send_(std::move(send)) {
    // The handler is queued, because the toolkit reports the choice after it hides the menu.
    QObject::connect(&widget(), &QMenu::aboutToHide, &widget(), [this] { sendClosed(); }, Qt::QueuedConnection);
}

void RequestedMenu::show(const PopUpMenu& request) {
    newest_ = request.asked;
    if (widget().isVisible()) {
        // A request that was made before the menu opened does not close the menu.
        if (request.asked > opened_) widget().close();
        return;
    }
    if (now() - request.asked <= timeout) open(request);
    if (!widget().isVisible()) sendClosed();
}

void RequestedMenu::open(const PopUpMenu& request) {
    menu_.show(request.menu);
    const int x = std::clamp(request.x, -largestCoordinate, largestCoordinate);
    const int y = std::clamp(request.y, -largestCoordinate, largestCoordinate);
    menu_.popUp(QRect(x, y - halfIcon, 1, 2 * halfIcon));
    opened_ = now();
}

void RequestedMenu::sendClosed() { send_(MenuClosed{newest_, std::exchange(chosen_, std::nullopt)}); }

}  // namespace kovra
