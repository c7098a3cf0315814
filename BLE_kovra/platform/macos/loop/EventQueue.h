#pragma once

namespace kovra {

// The application's queue of events: clicks, keys, and what the system asks of the application. Running the run loop
// alone takes nothing from this queue. So a menu opens, and Quit works, only while somebody takes its events.
class EventQueue {
  public:
    virtual ~EventQueue() = default;
    // Runs the run loop in its default mode until there is an event, and sends the event to its receiver.
    virtual void sendNextEvent() = 0;
    // Adds an event without a receiver, so that a waiting sendNextEvent() returns.
    virtual void wake() = 0;
};

}  // namespace kovra
