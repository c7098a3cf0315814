#pragma once

#include <gtest/gtest.h>

#include <string>

#include "BLE_kovra/platform/linux/wire/Encoding.h"

namespace kovra {

// Returns whether one of the two processes accepts the line. Expects that an accepted line is a message that can be
// encoded and decoded again.
inline bool isAccepted(const std::string& line) {
    const auto toWindow = decodeToWindow(line);
    const auto toResident = decodeToResident(line);
    if (toWindow) {
        const std::string again = encode(*toWindow);
        const auto twice = decodeToWindow(again);
        EXPECT_TRUE(twice) << line;
        if (twice) {
            EXPECT_EQ(encode(*twice), again);
        }
    }
    if (toResident) {
        EXPECT_EQ(decodeToResident(encode(*toResident)), toResident) << line;
    }
    return toWindow || toResident;
}

}  // namespace kovra
