#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/macos/fakes/FakeObject.h"

namespace kovra {

// One HID interface in the kernel. It owns its properties.
struct FakeInterface {
    enum class Registry { numbered, refusing, none };  // none: the interface has no entry in the registry

    FakeInterface() = default;
    FakeInterface(const FakeInterface&) = delete;
    FakeInterface& operator=(const FakeInterface&) = delete;
    ~FakeInterface();

    void set(const std::string& name, CFTypeRef owned);

    std::uint64_t number = 0;
    Registry registry = Registry::numbered;
    std::map<std::string, CFTypeRef> properties;
};

// The HID system of a machine. It behaves like the real one in these respects:
//
// - When its matching is set, a manager finds the devices that are already attached. It reports them from the run loop
//   once it is scheduled, whether or not it is open.
// - Without the user's permission, attached devices are still reported, with an error as the result.
// - A manager is scheduled once, and must not lose its last reference while it calls back.
struct FakeIOKit {
    using Plugged = std::shared_ptr<FakeInterface>;

    static Plugged attach(Plugged interface);
    static void detach(const Plugged& interface);
    static void unplugAll();
    static void allowListening(bool isAllowed);

    // Returns the requests to managers since the last call, in order.
    static std::vector<std::string> takeRequests();
    // Calls each callback without a context, as a faulty system might do.
    static void callWithoutContext();
};

}  // namespace kovra
