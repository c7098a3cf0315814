#pragma once

#include <functional>
#include <memory>

namespace kovra {

// The event loop of the main thread, for code that waits for file descriptors.
class DescriptorLoop {
  public:
    // The watch of one descriptor. Its destructor ends it.
    class Watch {
      public:
        virtual ~Watch() = default;
        // A watch is one-shot: after a call of its block it is inactive until rearm().
        virtual void rearm() = 0;
    };

    virtual ~DescriptorLoop() = default;

    // Calls `readable` once when the descriptor is readable or at its end. The block may run the loop nested and may
    // destroy its watch.
    virtual std::unique_ptr<Watch> watch(int descriptor, std::function<void()> readable) = 0;
    // Runs the loop until `done` returns true or the application terminates. It may be called inside a block; other
    // events are still handled.
    virtual void runUntil(const std::function<bool()>& done) = 0;
    // Returns whether the application has terminated.
    virtual bool isStopped() const = 0;
};

}  // namespace kovra
