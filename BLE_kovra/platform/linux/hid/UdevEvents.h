#pragma once

#include <libudev.h>

#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

// Files that tell whether udevd's events can reach this process: udevd's own socket, and the marks of sandboxes, in
// which they cannot.
struct UdevSigns {
    std::string udevd = "/run/udev/control";
    std::vector<std::string> sandboxes = {"/.flatpak-info", "/run/host/container-manager"};

    bool areOfUdevd() const;
};

// udevd's announcements about one subsystem. Tells which node is concerned and little more: what became of the node has
// to be read from the node.
class UdevEvents {
  public:
    struct Event {
        enum class Kind {
            device,
            lost,  // the socket overflowed: look at everything
            none   // nothing more for the moment
        };
        Kind kind;
        std::string nodeName;  // of a device
        std::string path;      // the same: where the kernel has it
        bool isRemoval = false;
    };

    // Listens from now on. Null where the system refuses.
    static std::unique_ptr<UdevEvents> open(udev* context, const char* subsystem);

    // Readable when there is an event.
    int descriptor() const { return udev_monitor_get_fd(monitor_.get()); }
    // Never waits.
    Event next();

  private:
    using Monitor = Handle<udev_monitor, udev_monitor_unref>;

    explicit UdevEvents(Monitor monitor) : monitor_(std::move(monitor)) {}

    Monitor monitor_;
};

}  // namespace kovra
