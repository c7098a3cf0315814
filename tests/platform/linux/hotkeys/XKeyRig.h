#pragma once

#include <memory>

#include "BLE_kovra/platform/linux/hotkeys/XcbHotKeyService.h"
#include "tests/platform/linux/hotkeys/TestKeyboard.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/VirtualScreen.h"

namespace kovra {

// A program with a hot key, somebody at the keyboard, and the window in front.
struct XKeyRig {
    VirtualScreen screen;
    SdEventLoop loop;
    std::unique_ptr<XConnection> connection = XConnection::open(loop);
    XcbHotKeyService hotKeys{*connection};
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
