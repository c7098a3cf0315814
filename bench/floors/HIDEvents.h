#pragma once

#include <libudev.h>
#include <poll.h>

#include <cstring>

namespace floors {

// Calls `plugged(true)` when udevd reports a new HID device, and `plugged(false)` when udevd reports a removal. Returns
// only if events cannot be received.
template <typename Function>
void forEachHIDEvent(Function plugged) {
    udev_monitor* monitor = udev_monitor_new_from_netlink(udev_new(), "udev");
    udev_monitor_filter_add_match_subsystem_devtype(monitor, "hid", nullptr);
    if (udev_monitor_enable_receiving(monitor) < 0) return;
    for (;;) {
        pollfd source{udev_monitor_get_fd(monitor), POLLIN, 0};
        ::poll(&source, 1, -1);
        while (udev_device* device = udev_monitor_receive_device(monitor)) {
            const char* action = udev_device_get_action(device);
            const bool came = std::strcmp(action, "add") == 0;
            if (came || std::strcmp(action, "remove") == 0) plugged(came);
            udev_device_unref(device);
        }
    }
}

}  // namespace floors
