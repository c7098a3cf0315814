#include "BLE_kovra/platform/linux/hid/UdevEvents.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

namespace kovra {

namespace {

bool exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

}  // namespace

bool UdevdPaths::isReachable() const { return exists(control) && std::ranges::none_of(sandboxes, exists); }

std::unique_ptr<UdevEvents> UdevEvents::open(udev* context, const char* subsystem, const UdevdPaths& paths) {
    const bool isFromKernel = !paths.isReachable();
    if (isFromKernel && !paths.kernelIsReachable()) return nullptr;
    Monitor monitor(udev_monitor_new_from_netlink(context, isFromKernel ? "kernel" : "udev"));
    // The filter is set first, so that events of other subsystems never wake the process.
    if (!monitor || udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), subsystem, nullptr) < 0 ||
        udev_monitor_enable_receiving(monitor.get()) < 0) {
        return nullptr;
    }
    return std::unique_ptr<UdevEvents>(new UdevEvents(std::move(monitor), isFromKernel));
}

UdevEvents::Event UdevEvents::next() {
    errno = 0;
    const Handle<udev_device, udev_device_unref> device(udev_monitor_receive_device(monitor_.get()));
    if (device) {
        const char* action = udev_device_get_action(device.get());
        const bool isRemoval = action != nullptr && std::string_view(action) == "remove";
        return {Event::Kind::device, udev_device_get_sysname(device.get()), udev_device_get_devpath(device.get()),
                isRemoval};
    }
    if (errno == 0 || errno == EAGAIN || errno == EINTR) return {Event::Kind::none, {}, {}};
    return {Event::Kind::lost, {}, {}};
}

}  // namespace kovra
