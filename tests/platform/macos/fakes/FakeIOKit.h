#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/macos/fakes/FakeObject.h"

namespace kovra {

// One HID interface as the kernel has it. It owns its properties.
struct FakeInterface {
    enum class Registry { numbered, refusing, none };  // none: no service behind it

    FakeInterface() = default;
    FakeInterface(const FakeInterface&) = delete;
    FakeInterface& operator=(const FakeInterface&) = delete;
    ~FakeInterface();

    void set(const std::string& name, CFTypeRef owned);

    std::uint64_t number = 0;
    Registry registry = Registry::numbered;
    std::map<std::string, CFTypeRef> properties;
};

// The HID system of a machine. What it has in common with the system's:
//
// - A manager finds what is attached already when it is told what to match, and tells of it from the run loop, once it
//   is scheduled, whether it is opened or not.
// - Without the user's permission the callbacks come all the same, with a result that is no success.
// - A manager is scheduled once, and must not lose its last reference while it calls back.
struct FakeIOKit {
    using Plugged = std::shared_ptr<FakeInterface>;

    static Plugged attach(Plugged interface);
    static void detach(const Plugged& interface);
    static void unplugAll();
    static void allowListening(bool isAllowed);

    // What was asked of managers, in order.
    static std::vector<std::string> takeRequests();
    // As a system would that calls once more than it should: with no context, or of a device that it told of before.
    static void callWithoutContext();
};

}  // namespace kovra
