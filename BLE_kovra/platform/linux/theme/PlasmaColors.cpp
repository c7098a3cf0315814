#include "BLE_kovra/platform/linux/theme/PlasmaColors.h"

#include <chrono>
#include <utility>

namespace kovra {

namespace {

using namespace std::chrono_literals;

// The kind of change: 0 is the palette, others are fonts, icons and the like.
constexpr int palette = 0;

// The panel receives the same signal, and may be slower.
constexpr auto patience = 1s;

}  // namespace

PlasmaColors::PlasmaColors(MainQueue& queue, SessionBus& bus, std::function<void()> changed)
    : queue_(queue), changed_(std::move(changed)), listening_(bus.listen([this](BusConnection* connection) {
          signals_.reset();
          if (connection == nullptr) return;
          signals_ = connection->receive({"", "/KGlobalSettings", "org.kde.KGlobalSettings", "notifyChange"},
                                         [this](sd_bus_message* signal) { receive(signal); });
      })) {}

void PlasmaColors::receive(sd_bus_message* signal) {
    int kind = 0;
    if (sd_bus_message_read(signal, "i", &kind) <= 0 || kind != palette) return;
    if (report_) report_->cancel();
    report_ = queue_.asyncAfter(patience, lifetime_.guard(changed_));
}

}  // namespace kovra
