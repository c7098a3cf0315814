#pragma once

#include <functional>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"

namespace kovra {

// Reports that Plasma's colors have changed. Whatever changes them sends a signal (notifyChange of
// org.kde.KGlobalSettings) on the session bus, under no name of its own. So any program of the user can cause a report.
class PlasmaColors {
  public:
    // `changed` is called from the queue.
    PlasmaColors(SessionBus& bus, std::function<void()> changed);
    PlasmaColors(const PlasmaColors&) = delete;
    PlasmaColors& operator=(const PlasmaColors&) = delete;

  private:
    const std::function<void()> changed_;
    BusToken signals_;
    BusToken listening_;
};

}  // namespace kovra
