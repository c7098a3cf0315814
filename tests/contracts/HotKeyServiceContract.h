#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "BLE_kovra/platform/HotKeyService.h"

namespace kovra {

// What every hot key service promises. A Driver makes one: `service()`; `press()`, one press of Control, Option and T
// and all that follows from it, which gives whether the window in front got it; `settle()`, after which the desktop has
// dealt with what was asked; and `takeByAnother()`: from now on another program has the key.
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

TYPED_TEST_P(HotKeyServiceContract, KeepsARegisteredPressFromTheWindowInFront) {
    this->install();
    EXPECT_TRUE(this->driver_.press());
    EXPECT_EQ(this->pressed_, 0);
    this->registerHotKey();
    EXPECT_FALSE(this->driver_.press());
}

TYPED_TEST_P(HotKeyServiceContract, SwallowsAPressThatNobodyHandles) {
    this->registerHotKey();
    EXPECT_FALSE(this->driver_.press());
}

TYPED_TEST_P(HotKeyServiceContract, GivesTheKeyBackWhenItsReferenceIsLetGoOf) {
    this->install();
    this->registerHotKey();
    this->unregister();
    EXPECT_TRUE(this->driver_.press());
    EXPECT_EQ(this->pressed_, 0);
    this->registerHotKey();
    EXPECT_FALSE(this->driver_.press());
    EXPECT_EQ(this->pressed_, 1);
}

TYPED_TEST_P(HotKeyServiceContract, CallsNoHandlerWhoseReferenceIsLetGoOfAndKeepsTheKey) {
    this->install();
    this->registerHotKey();
    this->handler_.reset();
    EXPECT_FALSE(this->driver_.press());
    EXPECT_EQ(this->pressed_, 0);
    this->install();
    this->driver_.press();
    EXPECT_EQ(this->pressed_, 1);
}

TYPED_TEST_P(HotKeyServiceContract, StaysQuietWhenAnotherProgramHasTheKey) {
    this->driver_.takeByAnother();
    this->install();
    this->registerHotKey();
    this->driver_.press();
    EXPECT_EQ(this->pressed_, 0);
}

REGISTER_TYPED_TEST_SUITE_P(HotKeyServiceContract, CallsTheHandlerOnceForEachPress,
                            KeepsARegisteredPressFromTheWindowInFront, SwallowsAPressThatNobodyHandles,
                            GivesTheKeyBackWhenItsReferenceIsLetGoOf,
                            CallsNoHandlerWhoseReferenceIsLetGoOfAndKeepsTheKey, StaysQuietWhenAnotherProgramHasTheKey);

}  // namespace kovra
