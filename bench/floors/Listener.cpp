// The floor of the section plug-to-flag. It writes "on" into the named file when udevd reports a new HID device, and
// "off" when udevd reports a removal. It runs until it is killed.

#include <libudev.h>
#include <poll.h>

#include <cstring>

#include "bench/floors/FlagFile.h"

int main(int count, char** arguments) {
    if (count != 2) return 2;
    udev_monitor* monitor = udev_monitor_new_from_netlink(udev_new(), "udev");
    udev_monitor_filter_add_match_subsystem_devtype(monitor, "hid", nullptr);
    if (udev_monitor_enable_receiving(monitor) < 0) return 1;
    for (;;) {
        pollfd source{udev_monitor_get_fd(monitor), POLLIN, 0};
        ::poll(&source, 1, -1);
        while (udev_device* device = udev_monitor_receive_device(monitor)) {
            const char* action = udev_device_get_action(device);
            const bool came = std::strcmp(action, "add") == 0;
            if (came || std::strcmp(action, "remove") == 0) floors::writeFlag(arguments[1], came);
            udev_device_unref(device);
        }
    }
}
