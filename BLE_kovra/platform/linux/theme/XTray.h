#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// The tray of the screen that embeds windows (XEmbed), that is, the program that owns the screen's tray selection. Many
// panels that show StatusNotifier items are such a tray too, and announce the color of their symbolic icons for it.
//
// It is watched only while somebody needs it. After the first queries, the watch wakes the program in four cases: the
// root window changes, a new owner announces itself there, the current owner's window is destroyed, or a property of
// that window changes.
class XTray {
  public:
    struct State {
        bool isPresent = false;
        std::optional<std::uint32_t> color = std::nullopt;  // of symbolic icons, as 0xRRGGBB, if the tray announces it
        bool operator==(const State&) const = default;
    };

    explicit XTray(XConnection& x) : x_(x) {}

    // Watches the tray for as long as the token lives. `changed` is called from the queue after each change. The first
    // change is that from no tray to a present one.
    using Token = std::shared_ptr<const void>;
    [[nodiscard]] Token watch(const std::function<void(const State&)>& changed);

  private:
    class Watch;

    XConnection& x_;
    std::weak_ptr<Watch> watch_;  // one for all tokens: a connection selects the events of a window only once
};

}  // namespace kovra
