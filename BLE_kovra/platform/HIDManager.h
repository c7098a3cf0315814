#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kovra {

// One attached HID interface. Valid only during the callback that hands it over.
class HIDDevice {
  public:
    virtual ~HIDDevice() = default;

    // The system registry's number of this interface: never given to another one while the system runs. Absent where
    // the interface has no registry entry.
    virtual std::optional<std::uint64_t> registryEntryID() const = 0;
    // The handle as a number, the same at attachment and removal; stands in for an absent registry number.
    virtual std::uint64_t handle() const = 0;

    // "VendorID", "ProductID". Absent where the device does not report it, or reports no integer.
    virtual std::optional<std::int64_t> integerProperty(std::string_view name) const = 0;
    // "Product", as valid UTF-8. Absent where the device does not report it, or reports no text.
    virtual std::optional<std::string> stringProperty(std::string_view name) const = 0;
};

// Tells of every HID interface of every kind: first, after open(), of each one already attached, then of each that
// comes. An interface whose name or numbers change is reported as removed and attached again; it may keep its registry
// number. One whose device is known to be switched off or out of reach is not attached, though the system lists it. All
// callbacks arrive on the main thread, from the event loop, never from inside a call of this class.
// Destroying the manager ends them.
class HIDManager {
  public:
    using Callback = std::function<void(const HIDDevice&)>;

    virtual ~HIDManager() = default;
    virtual void registerMatchingCallback(Callback attached) = 0;
    virtual void registerRemovalCallback(Callback removed) = 0;
    // Begins delivery. Where the system refuses, there are no events and no error.
    virtual void open() = 0;
};

// Where a HID manager comes from.
class HIDService {
  public:
    virtual ~HIDService() = default;
    virtual std::unique_ptr<HIDManager> createManager() = 0;
};

}  // namespace kovra
