#pragma once

#include <functional>

#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// A single query whether the screen has a tray that embeds windows. Unlike XEmbedTrayWatch it does not notice changes,
// and it selects no events.
class XEmbedTrayQuery {
  public:
    // `answered` is called once, from the queue, unless this object is destroyed before or the server disconnects.
    XEmbedTrayQuery(XConnection& x, std::function<void(bool isPresent)> answered);

  private:
    XConnection& x_;
    const std::function<void(bool)> answered_;
    XConnection::Token pendingReply_;
};

}  // namespace kovra
