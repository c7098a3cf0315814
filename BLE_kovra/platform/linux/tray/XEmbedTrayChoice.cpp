#include "BLE_kovra/platform/linux/tray/XEmbedTrayChoice.h"

#include <utility>

namespace kovra {

XEmbedTrayChoice::XEmbedTrayChoice(MainQueue& queue, Actions actions) : queue_(queue), actions_(std::move(actions)) {
    waitForHost();
}

XEmbedTrayChoice::~XEmbedTrayChoice() {
    if (wait_) wait_->cancel();
}

void XEmbedTrayChoice::setHostIsThere(bool isThere) {
    if (std::exchange(hostIsThere_, isThere) == isThere) return;
    if (!isThere) return waitForHost();
    if (wait_) wait_->cancel();
    wait_.reset();
    look(false);
}

void XEmbedTrayChoice::setTrayIsThere(bool isThere) {
    trayIsThere_ = isThere;
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
    if (!isWanted) setTrayIsThere(false);
    actions_.lookForTrays(isWanted);
}

void XEmbedTrayChoice::update() {
    const bool isWanted = isLooking_ && trayIsThere_;
    if (std::exchange(iconIsWanted_, isWanted) != isWanted) actions_.showIcon(isWanted);
}

}  // namespace kovra
