#pragma once

#include <QSocketNotifier>
#include <functional>

#include "BLE_kovra/platform/linux/wire/LineSocket.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// The socket to the resident program. Lines that are no message are passed over.
class Connection {
  public:
    explicit Connection(int socket);

    void send(const ToResident& message) const;

    std::function<void(const ToWindow& message)> onMessage;
    std::function<void()> onEnd;

  private:
    void receive();

    int socket_;
    LineReader reader_{longestToWindow};
    QSocketNotifier notifier_;
};

}  // namespace kovra
