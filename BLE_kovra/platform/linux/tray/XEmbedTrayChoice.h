#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

// Decides when the icon is shown in a tray that embeds windows (XEmbed): only if the desktop has such a tray and no
// StatusNotifier host. At the start, and after a host has disappeared, the program waits for the time `grace` for a
// host. After that, it looks for a tray that embeds windows. When a host appears later, the icon leaves the tray
// immediately. As long as there is a host, no timer runs, and the program does not look for trays.
class XEmbedTrayChoice {
  public:
    static constexpr std::chrono::seconds grace{5};

    // Each function is called when its `isWanted` changes; at first, both are false. Call setTrayPresent() only after
    // lookForTrays(true) and before lookForTrays(false).
    struct Actions {
        std::function<void(bool isWanted)> lookForTrays;
        std::function<void(bool isWanted)> showIcon;
    };

    // Assumes at first that there is no host and no tray.
    XEmbedTrayChoice(MainQueue& queue, Actions actions);
    ~XEmbedTrayChoice();
    XEmbedTrayChoice(const XEmbedTrayChoice&) = delete;
    XEmbedTrayChoice& operator=(const XEmbedTrayChoice&) = delete;

    void setHostPresent(bool isPresent);
    void setTrayPresent(bool isPresent);

  private:
    void waitForHost();
    void look(bool isWanted);
    void update();

    MainQueue& queue_;
    const Actions actions_;
    bool isHostPresent_ = false;
    bool isLooking_ = false;
    bool isTrayPresent_ = false;
    bool iconIsWanted_ = false;
    std::unique_ptr<DelayedTask> wait_;
};

}  // namespace kovra
