#pragma once

#include <memory>

#include "BLE_kovra/platform/linux/XcbHotKeyService.h"
#include "tests/platform/linux/TestKeyboard.h"
#include "tests/platform/linux/VirtualScreen.h"

namespace kovra {

// A program with a hot key, somebody at the keyboard, and the window in front.
struct XKeyRig {
    VirtualScreen screen;
    SdEventLoop loop;
    std::unique_ptr<XConnection> connection = XConnection::open(loop);
    XcbHotKeyService hotKeys{loop, *connection};
    TestKeyboard keyboard;

    // Everything that the server has sent so far has been acted upon: the loop has read up to an answer that came after
    // it, and run all that this queued.
    void turn() {
        for (int round = 0; round < 3; ++round) {
            const Allocated<xcb_get_input_focus_reply_t> answer{
                xcb_get_input_focus_reply(connection->get(), xcb_get_input_focus(connection->get()), nullptr)};
            connection->flush();
            bool done = false;
            loop.async([&] { done = true; });
            loop.runUntil([&] { return done; });
        }
    }
};

}  // namespace kovra
