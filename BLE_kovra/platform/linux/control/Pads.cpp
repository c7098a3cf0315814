#include "BLE_kovra/platform/linux/control/Pads.h"

#include <fcntl.h>
#include <grp.h>
#include <libudev.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <set>
#include <utility>

#include "BLE_kovra/platform/Utf8.h"
#include "BLE_kovra/platform/linux/control/HelperService.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "BLE_kovra/platform/posix/FileDescriptor.h"
#include "helper/pads/InputDevices.h"
#include "helper/pads/PadRules.h"

namespace kovra::control {

namespace {

using kovra::helper::InputProperties;

std::string hexadecimal(std::uint16_t number) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (int shift = 12; shift >= 0; shift -= 4) text += digits[number >> shift & 0xF];
    return text;
}

const char* textOf(helper::UsbPort port) {
    switch (port) {
        case helper::UsbPort::fixed:
            return "fixed";
        case helper::UsbPort::removable:
            return "removable";
        case helper::UsbPort::unknown:
            break;
    }
    return "unknown";
}

std::string firstLine(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return validUtf8(line);
}

void readAttribute(Pad& pad, const PadPlaces& places) {
    const std::string path = places.inputs + '/' + pad.input + "/inhibited";
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 2> value{};
    const ssize_t size = file.isOpen() ? ::read(file.number(), value.data(), value.size()) : -1;
    if (size < 0) {
        pad.error = std::strerror(errno);
        return;
    }
    if (size == 0 || (value[0] != '0' && value[0] != '1')) {
        pad.error = "the kernel's value is neither 0 nor 1";
        return;
    }
    pad.isMuted = value[0] == '1';
    struct stat status{};
    const group* service = ::getgrnam(places.group.c_str());
    if (service != nullptr && ::fstat(file.number(), &status) == 0)
        pad.mayServiceMute = status.st_gid == service->gr_gid && (status.st_mode & S_IWGRP) != 0;
}

void readRecord(Pad& pad, const PadPlaces& places) {
    struct stat status{};
    if (::lstat((places.records + '/' + pad.input).c_str(), &status) == 0) {
        pad.isRecorded = true;
        pad.recordedSince = momentOf(status.st_mtim.tv_sec);
    } else if (errno == ENOENT) {
        pad.isRecorded = false;
    }
}

// Returns what the rules have decided by.
std::vector<std::pair<std::string, std::string>> propertiesOf(const InputProperties& device, const PadPlaces& places) {
    return {{"ID_INPUT_TOUCHPAD", device.isTouchpad ? "1" : "0"},
            {"ID_INPUT_MOUSE", device.isMouse ? "1" : "0"},
            {"ID_INPUT_POINTINGSTICK", device.isPointingStick ? "1" : "0"},
            {"ID_INPUT_TOUCHPAD_INTEGRATION", device.integration.value_or("(not set)")},
            {"ID_SEAT", device.seat},
            {"bus", hexadecimal(device.bus)},
            {"vendor", hexadecimal(device.vendor)},
            {"product", firstLine(places.inputs + '/' + device.input + "/id/product")},
            {"USB port", textOf(device.port)},
            {"virtual", device.isVirtual ? "yes" : "no"}};
}

Pad padOf(const InputProperties& device, Pad::Kind kind, const PadPlaces& places) {
    Pad pad;
    pad.input = device.input;
    pad.name = validUtf8(device.name);
    pad.kind = kind;
    pad.properties = propertiesOf(device, places);
    readAttribute(pad, places);
    readRecord(pad, places);
    return pad;
}

}  // namespace

void readPads(std::vector<Pad>& pads, std::string& error, const PadPlaces& places) {
    const Handle<udev, udev_unref> context(udev_new());
    if (!context) {
        error = "udev cannot be asked";
        return;
    }
    int failure = 0;
    const std::vector<InputProperties> devices = helper::inputDevices(context.get(), failure);
    if (failure != 0) error = std::strerror(failure);
    const std::vector<std::string> muted = helper::inputsToMute(devices);
    std::set<std::string> seen;
    for (const InputProperties& device : devices) {
        const bool isMuted = std::ranges::find(muted, device.input) != muted.end();
        if ((!device.isTouchpad && !isMuted) || !seen.insert(device.input).second) continue;
        const Pad::Kind ifMuted = device.isTouchpad ? Pad::Kind::builtIn : Pad::Kind::twin;
        pads.push_back(padOf(device, isMuted ? ifMuted : Pad::Kind::other, places));
    }
    std::ranges::stable_sort(pads, {}, &Pad::kind);
}

}  // namespace kovra::control
