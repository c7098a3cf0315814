#pragma once

#include <functional>
#include <string>

#include "BLE_kovra/platform/linux/hid/UdevHIDNodes.h"

namespace kovra {

// Whether the device behind a HID node is really there. The node of some wireless devices stays when they are switched
// off, out of reach or asleep.
class HIDPresence {
  public:
    enum class Answer {
        there,  // or nothing is known to the contrary
        away,
        notYetKnown  // but soon: onChanged tells
    };

    virtual ~HIDPresence() = default;

    // As of now, of a node that exists and was just read.
    virtual Answer ask(const std::string& nodeName, const UdevHIDNode& node) = 0;
    // The node is no more.
    virtual void forget(const std::string& nodeName) = 0;

    // Another answer may be given of this node, which was asked about before. Called from the queue.
    std::function<void(const std::string& nodeName)> onChanged;
};

}  // namespace kovra
