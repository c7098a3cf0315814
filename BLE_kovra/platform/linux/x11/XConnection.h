#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

// The resident program's one connection to the X server, driven by the event loop.
//
// Events are delivered from the queue to all listeners. The connection selects none but announcements itself: listeners
// select what they need, and as little as possible, since each event wakes the program. Errors of unchecked requests
// are dropped. Call flush() after making requests.
//
// Only open() waits for a reply without a limit. A server that hangs, or that another program has grabbed, must not
// delay muting, the menu or the exit. Therefore replies and errors are read in the callback of whenServed().
class XConnection {
  public:
    // Connects to the display that $DISPLAY names. Returns null if the variable is not set or the connection fails.
    // `lost` is called once, from the queue, when the server has disconnected; the graphical session has then ended.
    static std::unique_ptr<XConnection> open(SdEventLoop& loop, std::function<void()> lost = {});

    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    // Never returns null. After the server has disconnected, requests do nothing and replies are null.
    xcb_connection_t* get() const { return connection_.get(); }
    // Returns the root windows of all screens. That of the screen in $DISPLAY comes first.
    const std::vector<xcb_window_t>& roots() const { return roots_; }

    // Sends the requests that were made so far.
    void flush();

    // Flushes, and calls `then` from the queue once the server has processed every request made so far. Their replies
    // can then be read without blocking. `then` is not called after the token was released, or if the server has
    // disconnected.
    using Token = std::shared_ptr<const void>;
    [[nodiscard]] Token whenServed(std::function<void()> then);

    using Events = Listeners<const xcb_generic_event_t&>;
    // Receives every event for as long as the token lives.
    [[nodiscard]] Events::Token listen(Events::Listener listener) { return events_.add(std::move(listener)); }

    // Selects, on the root windows, the messages by which managers such as a window manager or a tray announce
    // themselves. They arrive as client messages to a root window for as long as any of these tokens lives. The
    // connection must outlive the tokens.
    [[nodiscard]] Token receiveAnnouncements();

    // Returns the type of the event, without the flag that marks an event sent by another client.
    static std::uint8_t kindOf(const xcb_generic_event_t& event) { return event.response_type & 0x7F; }

  private:
    using Connection = Handle<xcb_connection_t, xcb_disconnect>;

    XConnection(SdEventLoop& loop, Connection connection, int screen, std::function<void()> lost);

    void selectOnRoots(std::uint32_t events);
    void dispatch();
    void callPending();

    SdEventLoop& loop_;
    const std::function<void()> lost_;
    Connection connection_;
    std::vector<xcb_window_t> roots_;
    Events events_;
    std::weak_ptr<const void> announcements_;
    struct PendingCallback {
        unsigned int sequence;
        std::weak_ptr<const std::function<void()>> then;
    };
    std::deque<PendingCallback> pending_;  // those whose request the server has not answered yet
    std::unique_ptr<SdEventLoop::Watch> watch_;
    Lifetime lifetime_;
};

}  // namespace kovra
