#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

// Decides when the icon goes into a tray that embeds windows (XEmbed): only where the desktop has such a tray and no
// StatusNotifier host. A host is given some time to come, at login as after a restart of the panel, before anybody
// looks for the other kind of tray; when one comes later it takes over at once. Where there is a host all of this costs
// nothing.
class XEmbedTrayChoice {
  public:
    static constexpr std::chrono::seconds grace{5};

    // Called when the answer changes; both start with false. Trays are reported only while they are looked for.
    struct Actions {
        std::function<void(bool isWanted)> lookForTrays;
        std::function<void(bool isWanted)> showIcon;
    };

    // Starts with no host known, and no tray.
    XEmbedTrayChoice(MainQueue& queue, Actions actions);
    ~XEmbedTrayChoice();
    XEmbedTrayChoice(const XEmbedTrayChoice&) = delete;
    XEmbedTrayChoice& operator=(const XEmbedTrayChoice&) = delete;

    void setHostIsThere(bool isThere);
    void setTrayIsThere(bool isThere);

  private:
    void waitForHost();
    void look(bool isWanted);
    void update();

    MainQueue& queue_;
    const Actions actions_;
    bool hostIsThere_ = false;
    bool isLooking_ = false;
    bool trayIsThere_ = false;
    bool iconIsWanted_ = false;
    std::unique_ptr<DelayedTask> wait_;
};

}  // namespace kovra
