#include "BLE_kovra/platform/linux/loop/Listeners.h"

#include <gtest/gtest.h>

#include <string>

namespace kovra {
namespace {

TEST(ListenersTest, AreCalledInTheOrderInWhichTheyWereAdded) {
    Listeners<int> listeners;
    std::string calls;
    const auto first = listeners.add([&](int value) { calls += "first " + std::to_string(value) + "; "; });
    const auto second = listeners.add([&](int value) { calls += "second " + std::to_string(value) + "; "; });
    listeners.call(7);
    EXPECT_EQ(calls, "first 7; second 7; ");
}

TEST(ListenersTest, AreCalledForAsLongAsTheirTokensLive) {
    Listeners<> listeners;
    int calls = 0;
    auto token = listeners.add([&] { ++calls; });
    listeners.call();
    token.reset();
    listeners.call();
    EXPECT_EQ(calls, 1);
}

TEST(ListenersTest, MayBeAddedAndRemovedDuringACall) {
    Listeners<> listeners;
    std::string calls;
    Listeners<>::Token own, other, late;
    own = listeners.add([&] {
        calls += "own ";
        own.reset();
        other.reset();
        late = listeners.add([&] { calls += "late "; });
    });
    other = listeners.add([&] { calls += "other "; });
    listeners.call();
    EXPECT_EQ(calls, "own ");
    listeners.call();
    EXPECT_EQ(calls, "own late ");
}

}  // namespace
}  // namespace kovra
