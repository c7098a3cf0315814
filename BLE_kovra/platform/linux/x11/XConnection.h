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

// The resident program's one connection to the X server, which takes its turn in the event loop.
//
// Events are handed out from the queue to whoever listens. It asks for none by itself: who wants events selects them,
// and then the least, since each wakes the program. Errors that the server reports late are dropped; who needs to know
// uses a checked request. Whoever made requests says so by flush().
//
// Nobody waits for an answer: a server that hangs, or that another program keeps to itself, must not hold up the mouse,
// the menu or the way out. Replies and errors are asked for in whenServed(). Opening the connection alone waits.
class XConnection {
  public:
    // To the display that the environment names; null where there is none.
    // `lost` is called once, from the queue, when the server is gone; with it the session at the screen has ended.
    static std::unique_ptr<XConnection> open(SdEventLoop& loop, std::function<void()> lost = {});

    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    // Never null. Once the server is gone, requests do nothing and replies are null.
    xcb_connection_t* get() const { return connection_.get(); }
    // The root windows of all screens, the one of the user's own screen first.
    const std::vector<xcb_window_t>& roots() const { return roots_; }

    // Sends what was asked for.
    void flush();

    // Calls `then` from the queue, unless the token is gone, once the server has dealt with every request made so far:
    // what it replied is then here, and asking for it waits for nothing. Never where the server has gone. Flushes.
    using Token = std::shared_ptr<const void>;
    [[nodiscard]] Token whenServed(std::function<void()> then);

    using Events = Listeners<const xcb_generic_event_t&>;
    // Hears every event for as long as the token lives.
    [[nodiscard]] Events::Token listen(Events::Listener listener) { return events_.add(std::move(listener)); }

    // What kind of event it is, also of one that another program sent.
    static std::uint8_t kindOf(const xcb_generic_event_t& event) { return event.response_type & 0x7F; }

  private:
    using Connection = Handle<xcb_connection_t, xcb_disconnect>;

    XConnection(SdEventLoop& loop, Connection connection, int screen, std::function<void()> lost);

    void handOut();
    void handOutAnswers();

    SdEventLoop& loop_;
    const std::function<void()> lost_;
    Connection connection_;
    std::vector<xcb_window_t> roots_;
    Events events_;
    struct Question {
        unsigned int sequence;
        std::weak_ptr<const std::function<void()>> then;
    };
    std::deque<Question> questions_;  // that the server has not answered yet
    std::unique_ptr<SdEventLoop::Watch> watch_;
    Lifetime lifetime_;
};

}  // namespace kovra
