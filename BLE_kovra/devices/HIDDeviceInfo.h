#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace kovra {

// A device in the list that HIDMonitor publishes.
struct HIDDeviceInfo {
    std::string id;    // the identity key, see userKey()
    std::string name;  // see displayName()
    bool connected;    // an interface is attached, or the grace period is running

    bool operator==(const HIDDeviceInfo&) const = default;
};

}  // namespace kovra

template <>
struct std::hash<kovra::HIDDeviceInfo> {
    std::size_t operator()(const kovra::HIDDeviceInfo& device) const noexcept {
        std::size_t seed = std::hash<std::string>{}(device.id);
        for (const std::size_t next : {std::hash<std::string>{}(device.name), std::hash<bool>{}(device.connected)}) {
            seed = seed * 31 + next;
        }
        return seed;
    }
};
