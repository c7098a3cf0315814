#include "BLE_kovra/platform/linux/theme/PlasmaColors.h"

#include <utility>

namespace kovra {

namespace {

// The kind of change: 0 is the palette, others are fonts, icons and the like.
constexpr int palette = 0;

}  // namespace

PlasmaColors::PlasmaColors(SessionBus& bus, std::function<void()> changed)
    : changed_(std::move(changed)), listening_(bus.listen([this](BusConnection* connection) {
          signals_.reset();
          if (connection == nullptr) return;
          signals_ = connection->receive({"", "/KGlobalSettings", "org.kde.KGlobalSettings", "notifyChange"},
                                         [this](sd_bus_message* signal) {
                                             int kind = 0;
                                             if (sd_bus_message_read(signal, "i", &kind) > 0 && kind == palette)
                                                 changed_();
                                         });
      })) {}

}  // namespace kovra
