#pragma once

#include <functional>
#include <optional>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/theme/PanelTone.h"

namespace kovra {

// The color scheme that the user prefers, according to the desktop's portal (org.freedesktop.portal.Settings, the key
// color-scheme of org.freedesktop.appearance). It applies to windows, and panels usually follow it.
//
// The portal is never started for this: whoever needs it starts it, and then the scheme is read. No function waits for
// a reply.
class PortalColorScheme {
  public:
    // `changed` is called from the queue after each change. It receives nothing if the user has no preference. Nothing
    // is known before the first call.
    PortalColorScheme(SessionBus& bus, std::function<void(std::optional<PanelTone>)> changed);
    PortalColorScheme(const PortalColorScheme&) = delete;
    PortalColorScheme& operator=(const PortalColorScheme&) = delete;

  private:
    void busChanged(BusConnection* bus);
    void read();
    void receive(sd_bus_message* signal);
    void take(sd_bus_message* message);

    const std::function<void(std::optional<PanelTone>)> changed_;
    std::optional<PanelTone> tone_;
    BusConnection* bus_ = nullptr;
    BusToken owner_;
    BusToken reply_;
    BusToken settings_;
    BusToken listening_;
};

}  // namespace kovra
