#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "BLE_kovra/platform/HotKeyService.h"

namespace kovra {

// The contract of HotKeyService. A Driver provides `service()`. `press()` presses Control, Option and T, and returns
// whether the focused window received the press. `settle()` waits until the desktop has handled all requests. After
// `takeByAnother()` another program holds the hot key.
template <typename Driver>
class HotKeyServiceContract : public testing::Test {
  protected:
    static constexpr HotKey controlOptionT{.keyCode = HotKey::ansiT,
                                           .modifiers = HotKey::controlKey | HotKey::optionKey,
                                           .signature = 0x54455354,
                                           .number = 1};

    void install() {
        handler_ = driver_.service().installHandler([this] {
            ++pressed_;
            return 0;
        });
    }
    void registerHotKey() {
        hotKey_ = driver_.service().registerHotKey(controlOptionT);
        driver_.settle();
    }
    void unregister() {
        hotKey_.reset();
        driver_.settle();
    }

    Driver driver_;
    std::unique_ptr<HotKeyService::Reference> handler_;
    std::unique_ptr<HotKeyService::Reference> hotKey_;
    int pressed_ = 0;
};

TYPED_TEST_SUITE_P(HotKeyServiceContract);

TYPED_TEST_P(HotKeyServiceContract, CallsTheHandlerOnceForEachPress) {
    this->install();
    this->registerHotKey();
    ASSERT_NE(this->handler_, nullptr);
    ASSERT_NE(this->hotKey_, nullptr);
    for (int presses = 1; presses <= 3; ++presses) {
        this->driver_.press();
        EXPECT_EQ(this->pressed_, presses);
    }
}

TYPED_TEST_P(HotKeyServiceContract, HidesARegisteredPressFromTheFocusedWindow) {
    this->install();
    EXPECT_TRUE(this->driver_.press());
    EXPECT_EQ(this->pressed_, 0);
    this->registerHotKey();
    EXPECT_FALSE(this->driver_.press());
}

TYPED_TEST_P(HotKeyServiceContract, SwallowsAPressWithoutAHandler) {
    this->registerHotKey();
    EXPECT_FALSE(this->driver_.press());
}

TYPED_TEST_P(HotKeyServiceContract, ReleasesTheKeyWithItsReference) {
    this->install();
    this->registerHotKey();
    this->unregister();
    EXPECT_TRUE(this->driver_.press());
    EXPECT_EQ(this->pressed_, 0);
    this->registerHotKey();
    EXPECT_FALSE(this->driver_.press());
    EXPECT_EQ(this->pressed_, 1);
}

TYPED_TEST_P(HotKeyServiceContract, KeepsTheKeyWithoutItsHandler) {
    this->install();
    this->registerHotKey();
    this->handler_.reset();
    EXPECT_FALSE(this->driver_.press());
    EXPECT_EQ(this->pressed_, 0);
    this->install();
    this->driver_.press();
    EXPECT_EQ(this->pressed_, 1);
}

TYPED_TEST_P(HotKeyServiceContract, IgnoresAKeyThatAnotherProgramHolds) {
    this->driver_.takeByAnother();
    this->install();
    this->registerHotKey();
    this->driver_.press();
    EXPECT_EQ(this->pressed_, 0);
}

REGISTER_TYPED_TEST_SUITE_P(HotKeyServiceContract, CallsTheHandlerOnceForEachPress,
                            HidesARegisteredPressFromTheFocusedWindow, SwallowsAPressWithoutAHandler,
                            ReleasesTheKeyWithItsReference, KeepsTheKeyWithoutItsHandler,
                            IgnoresAKeyThatAnotherProgramHolds);

}  // namespace kovra
