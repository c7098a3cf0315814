#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/StatusBar.h"

namespace kovra {

// The contract of StatusBar. A Driver provides `bar()`. `settle()` waits until all changes are shown.
//
// `icon()` (the name of the image), `toolTip()` and `menu()` return what the user sees. The menu has one line per menu
// item: "[x] Mute", "[ ] Mute", "Quit (q)", "(Hint)" if disabled, or "---". `click(position)` chooses a menu item,
// counted from 0, and may toggle its check mark as real panels do. `isThere()` returns whether the bar has a status
// item.
template <typename Driver>
class StatusBarContract : public testing::Test {
  protected:
    void SetUp() override {
        item_ = driver_.bar().statusItem(StatusBar::variableLength);
        ASSERT_TRUE(item_);
        ASSERT_NE(item_->button(), nullptr);
    }

    StatusBarButton& button() { return *item_->button(); }
    void showIcon(const std::string& name) {
        button().setImage({.name = name, .size = {18, 18}, .strokes = {}});
        button().setImageIsTemplate(true);
    }
    MenuItem entry(const std::string& title, const std::string& key = "") {
        MenuItem entry;
        entry.title = title;
        entry.keyEquivalent = key;
        entry.action = MenuAction{title, [this, title] { done_ += title + "; "; }};
        return entry;
    }
    MenuItem mark(const std::string& title, int tag, MenuItemState state) {
        MenuItem mark = entry(title);
        mark.tag = tag;
        mark.state = state;
        return mark;
    }
    MenuItem hint(const std::string& title) {
        MenuItem hint;
        hint.title = title;
        hint.isEnabled = false;
        return hint;
    }
    std::vector<std::string> menu() {
        driver_.settle();
        return driver_.menu();
    }
    void click(std::size_t position) {
        driver_.settle();
        driver_.click(position);
        driver_.settle();
    }

    Driver driver_;
    std::string done_;
    std::unique_ptr<StatusItem> item_;
};

TYPED_TEST_SUITE_P(StatusBarContract);

TYPED_TEST_P(StatusBarContract, ShowsTheLastImage) {
    EXPECT_FALSE(this->button().hasImage());
    for (const std::string name : {"plain", "slashed", "plain"}) {
        this->showIcon(name);
        EXPECT_TRUE(this->button().hasImage());
        this->driver_.settle();
        EXPECT_EQ(this->driver_.icon(), name);
    }
}

TYPED_TEST_P(StatusBarContract, ShowsTheToolTip) {
    for (const std::string text : {"off", "on", "ещё «один» & <b>"}) {
        this->button().setToolTip(text);
        this->driver_.settle();
        EXPECT_EQ(this->driver_.toolTip(), text);
    }
}

TYPED_TEST_P(StatusBarContract, ShowsTheMenuFromTopToBottom) {
    this->item_->setMenu(
        {{this->mark("Mute", 1, MenuItemState::on), this->mark("Login", 2, MenuItemState::off), this->hint("Hint"),
          this->entry("Settings", ","), MenuItem::separator(), this->entry("Quit", "q")}});
    EXPECT_EQ(this->menu(),
              (std::vector<std::string>{"[x] Mute", "[ ] Login", "(Hint)", "Settings (,)", "---", "Quit (q)"}));
}

TYPED_TEST_P(StatusBarContract, ShowsATitleLiterally) {
    this->item_->setMenu({{this->entry("_a & b_c __ <i>"), this->entry("Настройки…")}});
    EXPECT_EQ(this->menu(), (std::vector<std::string>{"_a & b_c __ <i>", "Настройки…"}));
}

TYPED_TEST_P(StatusBarContract, ShowsTheStateOfTheItemWithTheTag) {
    this->item_->setState(1, MenuItemState::on);  // no menu yet: nothing happens
    this->item_->setMenu({{this->mark("Mute", 1, MenuItemState::off), this->mark("Login", 2, MenuItemState::off)}});
    EXPECT_EQ(this->menu(), (std::vector<std::string>{"[ ] Mute", "[ ] Login"}));
    this->item_->setState(2, MenuItemState::on);
    EXPECT_EQ(this->menu(), (std::vector<std::string>{"[ ] Mute", "[x] Login"}));
    this->item_->setState(7, MenuItemState::on);
    this->item_->setState(2, MenuItemState::off);
    EXPECT_EQ(this->menu(), (std::vector<std::string>{"[ ] Mute", "[ ] Login"}));
}

TYPED_TEST_P(StatusBarContract, PerformsAChosenActionOnce) {
    this->item_->setMenu({{this->entry("One"), MenuItem::separator(), this->entry("Two")}});
    this->click(2);
    EXPECT_EQ(this->done_, "Two; ");
    this->click(0);
    EXPECT_EQ(this->done_, "Two; One; ");
}

TYPED_TEST_P(StatusBarContract, IgnoresDisabledItems) {
    MenuItem disabled = this->entry("No");
    disabled.isEnabled = false;
    this->item_->setMenu({{disabled, this->hint("Hint"), MenuItem::separator()}});
    for (const std::size_t position : {0U, 1U, 2U}) this->click(position);
    EXPECT_EQ(this->done_, "");
}

TYPED_TEST_P(StatusBarContract, ShowsTheTrueStateAfterAChoiceWithoutEffect) {
    this->item_->setMenu({{this->mark("Mute", 1, MenuItemState::off)}});
    for (int choice = 0; choice < 3; ++choice) {
        this->click(0);
        EXPECT_EQ(this->menu(), std::vector<std::string>{"[ ] Mute"});
    }
    EXPECT_EQ(this->done_, "Mute; Mute; Mute; ");
}

TYPED_TEST_P(StatusBarContract, ReplacesTheMenu) {
    this->item_->setMenu({{this->entry("Old"), this->entry("Older")}});
    EXPECT_EQ(this->menu(), (std::vector<std::string>{"Old", "Older"}));
    this->item_->setMenu({{this->entry("New")}});
    EXPECT_EQ(this->menu(), std::vector<std::string>{"New"});
    this->click(0);
    EXPECT_EQ(this->done_, "New; ");
}

TYPED_TEST_P(StatusBarContract, ShowsTheItemUntilItIsDestroyed) {
    this->showIcon("plain");
    this->driver_.settle();
    EXPECT_TRUE(this->driver_.isThere());
    this->item_.reset();
    this->driver_.settle();
    EXPECT_FALSE(this->driver_.isThere());
}

REGISTER_TYPED_TEST_SUITE_P(StatusBarContract, ShowsTheLastImage, ShowsTheToolTip, ShowsTheMenuFromTopToBottom,
                            ShowsATitleLiterally, ShowsTheStateOfTheItemWithTheTag, PerformsAChosenActionOnce,
                            IgnoresDisabledItems, ShowsTheTrueStateAfterAChoiceWithoutEffect, ReplacesTheMenu,
                            ShowsTheItemUntilItIsDestroyed);

}  // namespace kovra
