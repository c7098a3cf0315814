#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kovra {

// One attached HID interface. The object is valid only during the callback that receives it.
class HIDDevice {
  public:
    virtual ~HIDDevice() = default;

    // Returns the registry entry ID of this interface, or nullopt if it has no registry entry. The system does not
    // assign the same ID again until it restarts.
    virtual std::optional<std::uint64_t> registryEntryID() const = 0;
    // Returns a number that identifies an interface without a registry entry ID. The number is the same when the
    // interface is attached and when it is removed.
    virtual std::uint64_t handle() const = 0;

    // Returns the property "VendorID" or "ProductID". Returns nullopt if the device does not report it as an integer.
    virtual std::optional<std::int64_t> integerProperty(std::string_view name) const = 0;
    // Returns the property "Product" as valid UTF-8. Returns nullopt if the device does not report it as a text.
    virtual std::optional<std::string> stringProperty(std::string_view name) const = 0;
};

// A source of events for every HID interface of any kind. After open() it reports the interfaces that are already
// attached, then each later one. An interface whose name or numbers change is reported as removed and attached again,
// possibly with the same registry entry ID. If a device is known to be switched off or out of range, its interfaces
// count as not attached. Callbacks run on the main thread, from the event loop, never inside a call of this class.
// Destroying the manager ends the callbacks.
class HIDManager {
  public:
    using Callback = std::function<void(const HIDDevice&)>;

    virtual ~HIDManager() = default;
    virtual void registerMatchingCallback(Callback attached) = 0;
    virtual void registerRemovalCallback(Callback removed) = 0;
    // Starts the delivery of events. If the system refuses, there are no events and no error.
    virtual void open() = 0;
};

class HIDService {
  public:
    virtual ~HIDService() = default;
    virtual std::unique_ptr<HIDManager> createManager() = 0;
};

}  // namespace kovra
