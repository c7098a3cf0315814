#pragma once

#include <libudev.h>

#include <memory>
#include <string>

#include "BLE_kovra/platform/linux/Handles.h"

namespace kovra {

// udevd's announcements about the bus "hid". Tells which node is concerned and little more: what became of the node has
// to be read from the node.
class UdevHIDEvents {
  public:
    struct Event {
        enum class Kind {
            device,
            lost,  // the socket overflowed: compare the whole list of nodes
            none   // nothing more for the moment
        };
        Kind kind;
        std::string nodeName;  // of a device
        bool isRemoval = false;
    };

    // Listens from now on. Null where the system refuses.
    static std::unique_ptr<UdevHIDEvents> open(udev* context);

    // Readable when there is an event.
    int descriptor() const { return udev_monitor_get_fd(monitor_.get()); }
    // Never waits.
    Event next();

  private:
    using Monitor = Handle<udev_monitor, udev_monitor_unref>;

    explicit UdevHIDEvents(Monitor monitor) : monitor_(std::move(monitor)) {}

    Monitor monitor_;
};

}  // namespace kovra
