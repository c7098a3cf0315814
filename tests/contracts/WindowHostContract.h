#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/Window.h"
#include "tests/support/ViewDump.h"

namespace kovra {

// The contract of WindowHost. A Driver provides `host()`. `settle()` waits until all changes are shown and reported.
// `isSeen()`, `title()`, and `content()` (the text of a ViewDump) return what the user sees of the window. `close()`
// presses the close button of the frame, `turn(path, isOn)` sets a toggle, and `choose(path, tag)` selects in a picker.
template <typename Driver>
class WindowHostContract : public testing::Test {
  protected:
    using Texts = std::vector<std::string>;

    View content(const Texts& devices) {
        Picker picker{"Mode", {{"One", "one"}, {"Two", "two"}}, "one", {}};
        picker.select = [this](const std::string& tag) { done_.push_back("select " + tag); };
        std::vector<View> children{{picker, {}, {}, {}}};
        for (const std::string& device : devices) {
            const Toggle toggle{false,
                                [this, device](bool isOn) { done_.push_back(device + (isOn ? " on" : " off")); }};
            children.push_back(View{toggle, {{Text{device}, {}, {}, {}}}, {}, {}}.identified(device));
        }
        return {Stack{}, std::move(children), {}, {}};
    }
    void open() {
        window_->makeKeyAndOrderFront();
        driver_.settle();
    }
    void expectSeen(const Texts& devices) {
        driver_.settle();
        EXPECT_TRUE(driver_.isSeen());
        EXPECT_EQ(driver_.content(), ViewDump::of(content(devices)));
    }

    Driver driver_;
    Texts done_;
    std::unique_ptr<Window> window_ = driver_.host().makeWindow(content({"a", "b"}));
};

TYPED_TEST_SUITE_P(WindowHostContract);

TYPED_TEST_P(WindowHostContract, ShowsAWindowOnceItIsBroughtToTheFront) {
    this->window_->setTitle("A title");
    this->driver_.settle();
    EXPECT_FALSE(this->window_->isVisible());
    EXPECT_FALSE(this->driver_.isSeen());
    this->window_->makeKeyAndOrderFront();
    EXPECT_TRUE(this->window_->isVisible());
    this->expectSeen({"a", "b"});
    EXPECT_EQ(this->driver_.title(), "A title");
    this->open();
    this->expectSeen({"a", "b"});
}

TYPED_TEST_P(WindowHostContract, ReportsOnceThatTheUserSeesTheWindowBroughtToTheFront) {
    this->window_->setOnShown([this] {
        EXPECT_TRUE(this->driver_.isSeen());
        this->done_.push_back("shown");
    });
    this->driver_.settle();
    EXPECT_EQ(this->done_, std::vector<std::string>{});
    this->window_->makeKeyAndOrderFront();
    EXPECT_EQ(this->done_, std::vector<std::string>{});
    this->driver_.settle();
    this->window_->setContent(this->content({"c"}));
    this->driver_.settle();
    EXPECT_EQ(this->done_, std::vector<std::string>{"shown"});
    this->open();
    EXPECT_EQ(this->done_, (std::vector<std::string>{"shown", "shown"}));
}

TYPED_TEST_P(WindowHostContract, ShowsTheLastContent) {
    this->open();
    this->window_->setContent(this->content({"c"}));
    this->window_->setContent(this->content({"c", "d", "a"}));
    this->expectSeen({"c", "d", "a"});
    this->window_->setContent(this->content({}));
    this->expectSeen({});
}

TYPED_TEST_P(WindowHostContract, ShowsTheSameWindowAgainAfterTheUserClosedIt) {
    this->window_->setReleasedWhenClosed(false);
    this->window_->setTitle("A title");
    for (const std::string device : {"c", "d"}) {
        this->open();
        this->driver_.close();
        this->driver_.settle();
        EXPECT_FALSE(this->window_->isVisible());
        EXPECT_FALSE(this->driver_.isSeen());
        this->window_->setContent(this->content({device}));
        this->driver_.settle();
        EXPECT_FALSE(this->driver_.isSeen());
        this->open();
        this->expectSeen({device});
        EXPECT_EQ(this->driver_.title(), "A title");
    }
}

TYPED_TEST_P(WindowHostContract, ReportsAToggle) {
    this->open();
    this->driver_.turn({"b"}, true);
    this->driver_.settle();
    this->driver_.turn({"a"}, true);
    this->driver_.settle();
    this->driver_.turn({"b"}, false);
    this->driver_.settle();
    EXPECT_EQ(this->done_, (std::vector<std::string>{"b on", "a on", "b off"}));
}

TYPED_TEST_P(WindowHostContract, ReportsAChoiceEvenOfTheSelectedOption) {
    this->open();
    for (const std::string tag : {"two", "one", "one"}) {
        this->driver_.choose({"0"}, tag);
        this->driver_.settle();
    }
    EXPECT_EQ(this->done_, (std::vector<std::string>{"select two", "select one", "select one"}));
}

TYPED_TEST_P(WindowHostContract, ReportsAToggleThatHasMoved) {
    this->open();
    this->window_->setContent(this->content({"c", "b", "a"}));
    this->driver_.settle();
    this->driver_.turn({"a"}, true);
    this->driver_.settle();
    EXPECT_EQ(this->done_, std::vector<std::string>{"a on"});
}

TYPED_TEST_P(WindowHostContract, ShowsOnlyTheStateOfTheContent) {
    this->open();
    this->driver_.turn({"a"}, true);
    this->expectSeen({"a", "b"});
}

TYPED_TEST_P(WindowHostContract, ClosesTheWindowWhenItIsDestroyed) {
    this->open();
    this->window_.reset();
    this->driver_.settle();
    EXPECT_FALSE(this->driver_.isSeen());
    this->window_ = this->driver_.host().makeWindow(this->content({"c"}));
    this->driver_.settle();
    EXPECT_FALSE(this->driver_.isSeen());
    this->open();
    this->expectSeen({"c"});
}

REGISTER_TYPED_TEST_SUITE_P(WindowHostContract, ShowsAWindowOnceItIsBroughtToTheFront,
                            ReportsOnceThatTheUserSeesTheWindowBroughtToTheFront, ShowsTheLastContent,
                            ShowsTheSameWindowAgainAfterTheUserClosedIt, ReportsAToggle,
                            ReportsAChoiceEvenOfTheSelectedOption, ReportsAToggleThatHasMoved,
                            ShowsOnlyTheStateOfTheContent, ClosesTheWindowWhenItIsDestroyed);

}  // namespace kovra
