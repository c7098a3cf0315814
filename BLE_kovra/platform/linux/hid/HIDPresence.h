#pragma once

#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/hid/UdevHIDNodes.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"

namespace kovra {

// Reports whether the device behind a HID node is present. Some wireless devices keep their node while they are
// switched off, out of range or asleep.
class HIDPresence {
  public:
    enum class Answer {
        present,  // also if there is no information
        absent,
        unknown  // not known yet; the listeners are called when it is
    };

    virtual ~HIDPresence() = default;

    // Returns whether the device of this node is present. The node must exist, and `node` must be its current content.
    virtual Answer query(const std::string& nodeName, const UdevHIDNode& node) = 0;
    // Call this function when the node has been removed.
    virtual void forget(const std::string& nodeName) = 0;

    // Listeners are called from the queue with the name of each node whose answer may have changed.
    using Changes = Listeners<const std::string&>;
    [[nodiscard]] Changes::Token listen(Changes::Listener listener) { return changes_.add(std::move(listener)); }

  protected:
    void changed(const std::string& nodeName) const { changes_.call(nodeName); }

  private:
    Changes changes_;
};

}  // namespace kovra
