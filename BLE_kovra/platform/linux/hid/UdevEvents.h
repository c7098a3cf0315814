#pragma once

#include <libudev.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/hid/KernelEvents.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

// Files that show whether udevd's events reach this process: the socket of udevd and the marker files of sandboxes. The
// events do not reach processes in a sandbox.
struct UdevdPaths {
    std::string control = "/run/udev/control";
    std::vector<std::string> sandboxes = {"/.flatpak-info", "/run/host/container-manager"};
    // The folder of the input devices' nodes. The kernel removes them even while udevd hangs.
    std::string inputNodes = "/dev/input";
    // Queried only if udevd is not reachable.
    std::function<bool()> kernelIsReachable = kernelEventsArrive;

    bool isReachable() const;
};

// Events for one subsystem: those of udevd, or the kernel's own where udevd does not run. An event contains only the
// name and the path of the node, and whether the node was removed. Everything else has to be read from the node itself.
//
// Only udevd's events are filtered before they wake the process. Of the kernel's events each one wakes it.
class UdevEvents {
  public:
    struct Event {
        enum class Kind {
            device,
            lost,  // the socket overflowed: check all nodes
            none   // no more events for now
        };
        Kind kind;
        std::string nodeName;  // if kind is `device`
        std::string path;      // if kind is `device`: the path below /sys
        bool isRemoval = false;
    };

    // Starts receiving events. Returns null if neither udevd nor the kernel is reachable, or if the system refuses.
    static std::unique_ptr<UdevEvents> open(udev* context, const char* subsystem, const UdevdPaths& paths);
    // Returns whether this process receives the kernel's events although udevd has become reachable.
    bool shouldReopen(const UdevdPaths& paths) const { return areFromKernel_ && paths.isReachable(); }

    // Returns a descriptor that is readable when an event is pending.
    int descriptor() const { return udev_monitor_get_fd(monitor_.get()); }
    // Never blocks.
    Event next();

  private:
    using Monitor = Handle<udev_monitor, udev_monitor_unref>;

    UdevEvents(Monitor monitor, bool areFromKernel) : monitor_(std::move(monitor)), areFromKernel_(areFromKernel) {}

    Monitor monitor_;
    bool areFromKernel_;
};

}  // namespace kovra
