#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <string_view>

#include "helper/Descriptor.h"

namespace kovra::helper {

// Sends states to the service manager, as sd_notify(3) does, but never waits.
//
// Any account may write to the service manager's socket, and so keep its queue full. sd_notify() waits for room in the
// queue, and a process that waits cannot unmute a touchpad.
class Notifier {
  public:
    enum class Result {
        sent,
        full,  // the queue has no room; a later attempt may succeed
        failed,
    };

    // `address` is the value of NOTIFY_SOCKET: a path, or "@" and the name of an abstract socket. Null or any other
    // text means that there is no service manager.
    explicit Notifier(const char* address);

    // Sends a state, such as "READY=1".
    Result notify(std::string_view state) const;

  private:
    sockaddr_un address_{};
    socklen_t size_ = 0;
    Descriptor socket_;  // not open if there is no service manager
};

}  // namespace kovra::helper
