#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kovra {

// One attached HID interface. Valid only during the callback that receives it.
class HIDDevice {
  public:
    virtual ~HIDDevice() = default;

    // The registry entry ID of this interface, not reused until the system restarts. Nullopt if it has no registry
    // entry.
    virtual std::optional<std::uint64_t> registryEntryID() const = 0;
    // The handle as a number, the same at attachment and removal. It identifies an interface without a registry entry
    // ID.
    virtual std::uint64_t handle() const = 0;

    // "VendorID" or "ProductID". Nullopt if the device does not report it as an integer.
    virtual std::optional<std::int64_t> integerProperty(std::string_view name) const = 0;
    // "Product", as valid UTF-8. Nullopt if the device does not report it as a text.
    virtual std::optional<std::string> stringProperty(std::string_view name) const = 0;
};

// A source of events for every HID interface of any kind. After open() it reports the interfaces that are already
// attached, then each later one. An interface whose name or numbers change is reported as removed and attached again,
// possibly with the same registry entry ID. An interface of a device known to be off or out of range counts as not
// attached. Callbacks run on the main thread, from the event loop, never inside a call of this class. Destroying the
// manager ends the callbacks.
class HIDManager {
  public:
    using Callback = std::function<void(const HIDDevice&)>;

    virtual ~HIDManager() = default;
    virtual void registerMatchingCallback(Callback attached) = 0;
    virtual void registerRemovalCallback(Callback removed) = 0;
    // Starts the delivery of events. If the system refuses, there are no events and no error.
    virtual void open() = 0;
};

// Creates HID managers.
class HIDService {
  public:
    virtual ~HIDService() = default;
    virtual std::unique_ptr<HIDManager> createManager() = 0;
};

}  // namespace kovra
