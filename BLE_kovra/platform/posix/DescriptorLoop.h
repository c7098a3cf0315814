#pragma once

#include <functional>
#include <memory>

namespace kovra {

// The event loop of the main thread, for code that waits for file descriptors.
class DescriptorLoop {
  public:
    // Watches a descriptor for as long as this object lives.
    class Watch {
      public:
        virtual ~Watch() = default;
        // A watch is one-shot: after a call of the block it is inactive until rearm().
        virtual void rearm() = 0;
    };

    virtual ~DescriptorLoop() = default;

    // The block may run the loop nested and may destroy its watch.
    virtual std::unique_ptr<Watch> watch(int descriptor, std::function<void()> readable) = 0;
    // Runs the loop until `done` returns true or the application terminates. May be called inside a block; other events
    // are still handled.
    virtual void runUntil(const std::function<bool()>& done) = 0;
    // Whether the application has terminated.
    virtual bool isStopped() const = 0;
};

}  // namespace kovra
