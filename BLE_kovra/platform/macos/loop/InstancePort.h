#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "BLE_kovra/platform/macos/foundation/CFHandle.h"

namespace kovra {

// Tells apart the first and the second copy of the application in a login session, wherever their files are.
//
// The first copy receives messages at a port with the application's name. The system gives a name to one process at a
// time, and takes it back when that process ends, however it ends. If another process has the name but takes no
// message, this copy runs without a port: one copy too many is better than none.
class InstancePort {
  public:
    // Takes the name. If another process has it, sends that process a message.
    explicit InstancePort(std::string_view name);
    ~InstancePort();
    InstancePort(const InstancePort&) = delete;
    InstancePort& operator=(const InstancePort&) = delete;

    // Returns whether another copy has received the message. This copy must end then.
    bool isSecond() const { return isSecond_; }

    // Calls `asked` from the run loop, in its common modes, for each message from another copy. Messages that came
    // before this call are delivered, too. Call it at most once.
    void listen(std::function<void()> asked);

  private:
    static CFDataRef received(CFMessagePortRef, SInt32, CFDataRef, void* context) noexcept;

    std::function<void()> asked_;
    CFHandle<CFMessagePortRef> port_;  // null without the name
    bool isSecond_ = false;
};

}  // namespace kovra
