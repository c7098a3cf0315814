#pragma once

#include <memory>

#include "BLE_kovra/platform/linux/hotkeys/DesktopHotKeys.h"
#include "tests/platform/linux/hotkeys/TestKeyboard.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/VirtualScreen.h"

namespace kovra {

// A program with a hot key, somebody at the keyboard, and the window in front.
struct XKeyRig {
    VirtualScreen screen;
    SdEventLoop loop;
    int lost = 0;  // how often the connection was
    std::unique_ptr<XConnection> connection = XConnection::open(loop, [this] { ++lost; });
    DesktopHotKeys hotKeys = DesktopHotKeys::onX(*connection);
    TestKeyboard keyboard;

    // Everything that the server has sent so far has been acted upon, and what this made us ask too.
    void turn() {
        for (int round = 0; round < 5; ++round) {
            bool isServed = false;
            const auto token = connection->whenServed([&] { isServed = true; });
            EXPECT_TRUE(turnUntil(loop, [&] { return isServed; }));
        }
    }
};

}  // namespace kovra
