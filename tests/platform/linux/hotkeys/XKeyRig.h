#pragma once

#include <memory>

#include "BLE_kovra/platform/linux/hotkeys/DesktopHotKeys.h"
#include "tests/platform/linux/hotkeys/TestKeyboard.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/VirtualScreen.h"

namespace kovra {

// The hot keys of a program on an X server, a keyboard, and the focused window.
struct XKeyRig {
    VirtualScreen screen;
    SdEventLoop loop;
    int lost = 0;  // how often the connection was lost
    std::unique_ptr<XConnection> connection = XConnection::open(loop, [this] { ++lost; });
    DesktopHotKeys hotKeys = DesktopHotKeys::onX(*connection);
    TestKeyboard keyboard;

    // Runs the loop until all events sent so far have been handled, and the requests that they caused have been
    // answered.
    void turn() {
        for (int round = 0; round < 5; ++round) {
            bool isServed = false;
            const auto token = connection->whenServed([&] { isServed = true; });
            EXPECT_TRUE(turnUntil(loop, [&] { return isServed; }));
        }
    }
};

}  // namespace kovra
