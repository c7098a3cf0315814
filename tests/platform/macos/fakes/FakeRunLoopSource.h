#pragma once

#include <functional>
#include <utility>

#include "tests/platform/macos/fakes/FakeObject.h"

// A source of the run loop for another object, which it retains.
struct __CFRunLoopSource : kovra::FakeObject {
    // `handle` handles one event and returns true, or returns false if there is none. It is null for a descriptor, for
    // which the run loop itself looks.
    explicit __CFRunLoopSource(CFTypeRef of, std::function<bool()> handleOne = nullptr)
        : FakeObject(kovra::FakeType::source), owner(of), handle(std::move(handleOne)) {
        CFRetain(owner);
    }
    ~__CFRunLoopSource() override { CFRelease(owner); }

    CFTypeRef const owner;
    const std::function<bool()> handle;
};

namespace kovra {

// Removes the sources of this object from the run loop.
void removeSourcesOf(CFTypeRef owner);

}  // namespace kovra
