#pragma once

#include <functional>
#include <memory>

#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"

namespace kovra {

// Reports that Plasma's colors have changed. Whatever changes them sends a signal (notifyChange of
// org.kde.KGlobalSettings) on the session bus, under no name of its own. So any program of the user can cause a report.
// Changes are reported one second after the last of them, when the panel has its new colors.
class PlasmaColors {
  public:
    // `changed` is called from the queue.
    PlasmaColors(MainQueue& queue, SessionBus& bus, std::function<void()> changed);
    PlasmaColors(const PlasmaColors&) = delete;
    PlasmaColors& operator=(const PlasmaColors&) = delete;

  private:
    void receive(sd_bus_message* signal);

    MainQueue& queue_;
    const std::function<void()> changed_;
    std::unique_ptr<DelayedTask> report_;
    BusToken signals_;
    BusToken listening_;
    Lifetime lifetime_;
};

}  // namespace kovra
