#pragma once

#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/hid/UdevHIDNodes.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"

namespace kovra {

// Whether the device behind a HID node is really there. The node of some wireless devices stays when they are switched
// off, out of reach or asleep.
class HIDPresence {
  public:
    enum class Answer {
        there,  // or nothing is known to the contrary
        away,
        notYetKnown  // but soon: listeners receive it
    };

    virtual ~HIDPresence() = default;

    // As of now, of a node that exists and was just read.
    virtual Answer ask(const std::string& nodeName, const UdevHIDNode& node) = 0;
    // The node was removed.
    virtual void forget(const std::string& nodeName) = 0;

    // Receives from the queue the name of each node about which another answer may be given than before.
    using Changes = Listeners<const std::string&>;
    [[nodiscard]] Changes::Token listen(Changes::Listener listener) { return changes_.add(std::move(listener)); }

  protected:
    void changed(const std::string& nodeName) const { changes_.call(nodeName); }

  private:
    Changes changes_;
};

}  // namespace kovra
