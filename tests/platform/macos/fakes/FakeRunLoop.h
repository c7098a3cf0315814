#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "tests/platform/macos/fakes/FakeObject.h"

namespace kovra {

// The run loop of the main thread with the main dispatch queue, in real time. It behaves like the real one in these
// respects:
//
// - A block of the queue never runs inside another one, even if that one runs the loop.
// - A source fires only in the modes that it was added to. The common modes are the default mode and that of alerts.
// - A descriptor fires once, and then not again until it is re-enabled.
// - The application's events stay in their queue until somebody asks for the next one.
//
// If no event can ever arrive, it aborts the test instead of waiting.
class FakeRunLoop {
  public:
    // An event source other than descriptors and blocks.
    class Source {
      public:
        virtual ~Source() = default;
        virtual bool firesIn(CFRunLoopMode mode) const = 0;
        virtual bool hasEvents() const = 0;
        virtual void fire() = 0;
    };
    static void add(Source& source);
    static void remove(Source& source);

    // Returns the mode of alerts, which the application adds to the common modes.
    static CFRunLoopMode alertMode();
    // Returns whether a source that was added to one mode fires in another.
    static bool fires(CFRunLoopMode addedTo, CFRunLoopMode in);

    // Runs until nothing is due any more.
    static void settle(CFRunLoopMode mode = kCFRunLoopDefaultMode);
    static void let(std::chrono::nanoseconds duration);
    // Runs until the condition holds. Returns false if it does not hold in time.
    static bool turnUntil(const std::function<bool()>& condition);

    // Runs `due` as a block of the main queue at this time, in nanoseconds on the clock of dispatch_time().
    static void addTimer(std::int64_t time, bool isStrict, std::function<void()> due);
    // Lets the system nap, or wakes it: while it naps, only strict timers fire.
    static void nap(bool isNapping);

    // Adds an event to the application's queue: a click, a key. `received` is what its receiver does.
    static void addEvent(std::function<void()> received);
    // Runs in the default mode until there is an event, and sends it to its receiver.
    static void sendNextEvent();

    // Runs all queued blocks, including those that are not due yet, drops the events, and ends a nap, so that nothing
    // remains for the next test.
    static void endProcess();
};

}  // namespace kovra
