#include "BLE_kovra/platform/linux/UdevHIDNodes.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>
#include <variant>

#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

namespace {

using Enumeration = Handle<udev_enumerate, udev_enumerate_unref>;

constexpr const char* subsystem = "hid";
const std::string devicesFolder = "/sys/bus/hid/devices/";

// The whole file, or the reason why there is none.
std::variant<std::string, int> contentOf(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC));
    if (!file.isOpen()) return errno;
    std::string text;
    std::array<char, 4096> piece;  // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
    ssize_t count;
    while ((count = ::read(file.number(), piece.data(), piece.size())) > 0)
        text.append(piece.data(), static_cast<std::size_t>(count));
    if (count < 0) return errno;
    return text;
}

bool isShortage(int error) { return error == EMFILE || error == ENFILE || error == ENOMEM; }

// What the line NAME=VALUE says. The first such line: what the kernel knows stands before what a device says of itself.
std::optional<std::string_view> property(std::string_view uevent, std::string_view name) {
    while (!uevent.empty()) {
        const std::string_view line = uevent.substr(0, uevent.find('\n'));
        uevent.remove_prefix(std::min(line.size() + 1, uevent.size()));
        if (line.starts_with(name) && line.substr(name.size()).starts_with('=')) return line.substr(name.size() + 1);
    }
    return std::nullopt;
}

}  // namespace

std::vector<std::string> UdevHIDNodes::names() const {
    const Enumeration enumeration(udev_enumerate_new(context_));
    if (!enumeration || udev_enumerate_add_match_subsystem(enumeration.get(), subsystem) < 0 ||
        udev_enumerate_scan_devices(enumeration.get()) < 0) {
        return {};
    }
    std::vector<std::string> names;
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumeration.get())) {
        const std::string_view path = udev_list_entry_get_name(entry);
        names.emplace_back(path.substr(path.rfind('/') + 1));
    }
    return names;
}

// One file has it all, as of one moment. libudev would find the same by some fifty calls, and the flag would wait for
// them.
UdevHIDNode UdevHIDNodes::read(const std::string& name) {
    const auto content = contentOf(devicesFolder + name + "/uevent");
    if (const int* error = std::get_if<int>(&content)) {
        return {isShortage(*error) ? UdevHIDNode::State::unreadable : UdevHIDNode::State::gone, std::nullopt};
    }
    const auto& uevent = std::get<std::string>(content);
    return {property(uevent, "DRIVER") ? UdevHIDNode::State::bound : UdevHIDNode::State::unbound,
            UdevHIDDevice(name, property(uevent, "HID_ID"), property(uevent, "HID_NAME"))};
}

}  // namespace kovra
