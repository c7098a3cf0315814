#include "BLE_kovra/platform/linux/tray/XEmbedTrayChoice.h"

#include <utility>

namespace kovra {

XEmbedTrayChoice::XEmbedTrayChoice(MainQueue& queue, Actions actions) : queue_(queue), actions_(std::move(actions)) {
    waitForHost();
}

XEmbedTrayChoice::~XEmbedTrayChoice() {
    if (wait_) wait_->cancel();
}

void XEmbedTrayChoice::setHostPresent(bool isPresent) {
    if (std::exchange(isHostPresent_, isPresent) == isPresent) return;
    if (!isPresent) return waitForHost();
    if (wait_) wait_->cancel();
    wait_.reset();
    look(false);
}

void XEmbedTrayChoice::setTrayPresent(bool isPresent) {
    isTrayPresent_ = isPresent;
    update();
}

void XEmbedTrayChoice::waitForHost() {
    wait_ = queue_.asyncAfter(grace, [this] {
        wait_.reset();
        look(true);
    });
}

void XEmbedTrayChoice::look(bool isWanted) {
    if (std::exchange(isLooking_, isWanted) == isWanted) return;
    if (!isWanted) setTrayPresent(false);
    actions_.lookForTrays(isWanted);
}

void XEmbedTrayChoice::update() {
    const bool isWanted = isLooking_ && isTrayPresent_;
    if (std::exchange(iconIsWanted_, isWanted) != isWanted) actions_.showIcon(isWanted);
}

}  // namespace kovra
