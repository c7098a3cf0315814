#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

// The feedback that a desktop shows while it starts a program, such as a busy pointer. The program ends it with the
// startup ID that the desktop has passed to it. Feedback that nobody ends stays for up to 20 s.
class LaunchFeedback {
  public:
    // Feedback ends this long after its start at the latest, unless the constructor sets another limit.
    static constexpr std::chrono::seconds longest{5};
    // Startup IDs beyond this number, which no user causes within the limit, are ignored.
    static constexpr std::size_t most = 16;

    // `end` tells the desktop to end the feedback with this startup ID.
    using End = std::function<void(const std::string& id)>;
    LaunchFeedback(MainQueue& queue, End end, std::chrono::milliseconds limit = longest);
    ~LaunchFeedback();
    LaunchFeedback(const LaunchFeedback&) = delete;
    LaunchFeedback& operator=(const LaunchFeedback&) = delete;

    // Call this function for each start of the program. Does nothing if the startup ID is empty.
    void begin(const std::string& id);
    // Ends all feedback.
    void end();

    bool isShown() const { return !ids_.empty(); }

  private:
    MainQueue& queue_;
    const End end_;
    const std::chrono::milliseconds limit_;
    std::vector<std::string> ids_;
    std::unique_ptr<DelayedTask> timer_;
};

}  // namespace kovra
