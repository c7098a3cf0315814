#pragma once

#include <chrono>
#include <functional>

#include "tests/platform/macos/fakes/FakeObject.h"

namespace kovra {

// The run loop of the main thread with the main dispatch queue, in real time. What it has in common with the system's:
//
// - A block of the queue runs only where no other does, whatever turns the loop inside that one.
// - Sources are heard in the modes that they were added to; the common modes are the default one and that of alerts.
// - A descriptor rings once, and then no more before it is asked to.
//
// It refuses to wait where nothing can ever come.
class FakeRunLoop {
  public:
    // What is heard in a mode, besides descriptors and blocks.
    class Source {
      public:
        virtual ~Source() = default;
        virtual bool isHeardIn(CFRunLoopMode mode) const = 0;
        virtual bool hasNews() const = 0;
        virtual void tell() = 0;
    };
    static void add(Source& source);
    static void remove(Source& source);

    // That of alerts, which the application adds to the common modes.
    static CFRunLoopMode alertMode();
    // Whether what was added to one mode is heard in another.
    static bool isHeard(CFRunLoopMode addedTo, CFRunLoopMode in);

    // Turns until nothing is due any more.
    static void settle(CFRunLoopMode mode = kCFRunLoopDefaultMode);
    static void let(std::chrono::nanoseconds duration);
    // Whether the condition came true in time.
    static bool turnUntil(const std::function<bool()>& condition);

    // What is queued runs off, however late it is due: nothing is left of the process.
    static void endProcess();
};

}  // namespace kovra
