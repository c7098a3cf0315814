#include "BLE_kovra/platform/linux/ui/tray/RequestedMenu.h"

#include <algorithm>
#include <utility>

namespace kovra {

namespace {

using std::chrono::milliseconds;

constexpr std::chrono::seconds patience{2};

// The menu leaves the clicked place free, so that the next click there is no choice.
constexpr int halfIcon = 12;

constexpr int farthest = 32'767;  // on any screen of X

milliseconds now() {
    return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

}  // namespace

RequestedMenu::RequestedMenu(SendToResident send) : send_(std::move(send)) {
    // Queued, since what was chosen is told after it hides.
    QObject::connect(
        &widget(), &QMenu::aboutToHide, &widget(), [this] { tellClosed(); }, Qt::QueuedConnection);
}

void RequestedMenu::show(const PopUpMenu& request) {
    newest_ = request.asked;
    if (widget().isVisible()) {
        // Whoever asked before the menu was to be seen did not ask it to close.
        if (request.asked > opened_) widget().close();
        return;
    }
    if (now() - request.asked <= patience) open(request);
    if (!widget().isVisible()) tellClosed();
}

void RequestedMenu::open(const PopUpMenu& request) {
    menu_.show(request.menu);
    const int x = std::clamp(request.x, -farthest, farthest);
    const int y = std::clamp(request.y, -farthest, farthest);
    menu_.popUp(QRect(x, y - halfIcon, 1, 2 * halfIcon));
    opened_ = now();
}

void RequestedMenu::tellClosed() { send_(MenuClosed{newest_, std::exchange(chosen_, std::nullopt)}); }

}  // namespace kovra
