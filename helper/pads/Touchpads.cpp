#include "helper/pads/Touchpads.h"

#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

#include "helper/Log.h"
#include "helper/pads/InputDevices.h"
#include "helper/pads/PadRules.h"

namespace kovra::helper {

namespace {

bool isEventNode(udev_device* device) {
    const char* name = udev_device_get_sysname(device);
    return name != nullptr && std::string_view(name).starts_with("event");
}

}  // namespace

Touchpads::Touchpads(Loop& loop) : loop_(loop), udev_(udev_new()) {
    if (udev_) monitor_.reset(udev_monitor_new_from_netlink(udev_.get(), "udev"));
    if (!monitor_) throw std::system_error(errno, std::generic_category(), "udev");
    // The kernel applies the filter, so that events of other subsystems do not wake the process. Receiving starts
    // before the first scan, so that no event is missed in between.
    int result = udev_monitor_filter_add_match_subsystem_devtype(monitor_.get(), "input", nullptr);
    if (result >= 0) result = udev_monitor_enable_receiving(monitor_.get());
    if (result < 0) throw std::system_error(-result, std::generic_category(), "udev");
    watch_ = loop.onReadable(udev_monitor_get_fd(monitor_.get()), [this] { receiveEvents(); });
    scan();
}

void Touchpads::rescan() {
    if (scan() && onChange) onChange();
}

bool Touchpads::scan() {
    int error = 0;
    std::vector<std::string> inputs = inputsToMute(inputDevices(udev_.get(), error));
    retry_.reset();
    if (error != 0) {
        logError("not all touchpads can be read", error);
        retry_ = loop_.after(backoff_.nextDelay(), [this] { rescan(); });
    } else {
        backoff_.reset();
    }
    return std::exchange(inputs_, std::move(inputs)) != inputs_;
}

void Touchpads::receiveEvents() {
    bool mustRescan = false;
    while (true) {
        errno = 0;
        const Handle<udev_device, udev_device_unref> device(udev_monitor_receive_device(monitor_.get()));
        if (device)
            mustRescan = mustRescan || isEventNode(device.get());
        else if (errno == ENOBUFS)
            mustRescan = true;  // the kernel has dropped events
        else if (errno != EINTR)
            break;
    }
    if (!mustRescan) return;
    rescan();
    if (onEvent) onEvent();
}

}  // namespace kovra::helper
