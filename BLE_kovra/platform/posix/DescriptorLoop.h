#pragma once

#include <functional>
#include <memory>

namespace kovra {

// The event loop of the one thread, as who waits for descriptors sees it.
class DescriptorLoop {
  public:
    // A descriptor that is watched, until it is let go of.
    class Watch {
      public:
        virtual ~Watch() = default;
        // Each ring is one call of the block; the descriptor then stays silent until the block asks for the next.
        virtual void rearm() = 0;
    };

    virtual ~DescriptorLoop() = default;

    // The block may run the loop nested, and may let go of its watch.
    virtual std::unique_ptr<Watch> watch(int descriptor, std::function<void()> readable) = 0;
    // Turns until `done`, or until the application terminates. Also from inside a block: what happens meanwhile goes on
    // happening.
    virtual void runUntil(const std::function<bool()>& done) = 0;
    // The application has terminated.
    virtual bool isStopped() const = 0;
};

}  // namespace kovra
