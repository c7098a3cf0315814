#include "BLE_kovra/platform/macos/views/AppKitWindowHost.h"

#import <AppKit/AppKit.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/Workspace.h"
#include "tests/contracts/WindowHostContract.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/platform/macos/gnustep/Texts.h"
#include "tests/platform/macos/gnustep/standins/Accessibility.h"
#include "tests/platform/macos/gnustep/standins/Button.h"
#include "tests/platform/macos/gnustep/standins/ClickGestureRecognizer.h"

namespace kovra {
namespace {

using Texts = std::vector<std::string>;

class OpenedAddresses : public Workspace {
  public:
    void open(const std::string& url) override { all.push_back(url); }
    Texts all;
};

std::string lowercase(std::string text) {
    for (char& each : text) {
        if (each >= 'A' && each <= 'Z') each = static_cast<char>(each - 'A' + 'a');
    }
    return text;
}

// The window that the host has made last, as the user sees it.
class AppKitWindowHostDriver : private WindowHost {
  public:
    WindowHost& host() { return *this; }
    void settle() { queue_.run(); }

    NSWindow* window() const {
        for (NSWindow* each in [NSApp windows]) {
            if (![earlier_ containsObject:each]) return each;
        }
        return nil;
    }
    bool isSeen() const { return [window() isVisible]; }
    std::string title() const { return utf8String([window() title]); }
    void close() { [window() performClose:nil]; }
    NSButton* button(const std::string& title) const { return buttonWithTitle([window() contentView], title); }
    void turn(const Texts& path, bool isOn) {
        NSButton* box = button(path.front());
        [box setState:isOn ? NSControlStateValueOff : NSControlStateValueOn];  // as the user may have seen it
        [box performClick:nil];
    }
    // The picker is the only one in the window. Its tags are the titles in lower case.
    void choose(const Texts&, const std::string& tag) {
        for (NSButton* each : viewsBelow<NSButton>([window() contentView])) {
            if (lowercase(utf8String([each title])) == tag) return [each performClick:nil];
        }
    }
    std::string content() const {
        NSView* column = [[[window() contentView] subviews] lastObject];
        View shown{Stack{}, {}, {}, {}};
        for (NSView* each in [column subviews]) {
            shown.children.push_back([each isKindOfClass:[NSButton class]] ? box(static_cast<NSButton*>(each))
                                                                           : picker(each));
        }
        return ViewDump::of(shown);
    }

    const Texts& opened() const { return workspace_.all; }

  private:
    std::unique_ptr<Window> makeWindow(View content) override {
        earlier_ = [[NSApp windows] copy];
        return host_.makeWindow(std::move(content));
    }
    static View box(NSButton* button) {
        const std::string title = utf8String([button title]);
        const Toggle toggle{[button state] == NSControlStateValueOn, {}};
        return View{toggle, {{Text{title}, {}, {}, {}}}, {}, {}}.identified(title);
    }
    static View picker(NSView* row) {
        Picker shown;
        shown.title = utf8String([viewsBelow<NSTextField>(row).front() stringValue]);
        for (NSButton* each : viewsBelow<NSButton>(row)) {
            const std::string title = utf8String([each title]);
            shown.options.push_back({title, lowercase(title)});
            if ([each state] == NSControlStateValueOn) shown.selection = lowercase(title);
        }
        return {shown, {}, {}, {}};
    }

    FakeMainQueue queue_;
    OpenedAddresses workspace_;
    AppKitWindowHost host_{queue_, workspace_};
    NSArray* earlier_ = nil;
};

INSTANTIATE_TYPED_TEST_SUITE_P(AppKitWindowHost, WindowHostContract, AppKitWindowHostDriver);

class AppKitWindowHostTest : public testing::Test {
  protected:
    void show(View content) {
        window_ = driver_.host().makeWindow(std::move(content));
        window_->makeKeyAndOrderFront();
        driver_.settle();
    }
    // A check box whose label is a row of a dot, a name and a remark.
    View device() {
        const Toggle toggle{false, [this](bool isOn) { chosen_.push_back(isOn ? "on" : "off"); }};
        std::vector<View> label{View{Circle{}, {}, {}, {}}.frame({.width = 8, .height = 8}),
                                {Text{"Mouse"}, {}, {}, {}},
                                {Spacer{}, {}, {}, {}},
                                {Text{"disconnected"}, {}, {}, {}}};
        View row{Stack{Stack::Axis::horizontal, Alignment::center, {}}, std::move(label), {}, {}};
        return {Stack{}, {{toggle, {std::move(row)}, {}, {}}}, {}, {}};
    }

    AppKitWindowHostDriver driver_;
    std::unique_ptr<Window> window_;
    Texts chosen_;
};

TEST_F(AppKitWindowHostTest, TogglesABoxByAClickOnItsLabel) {
    show(device());
    NSButton* box = driver_.button("");
    ASSERT_NE(box, nil);
    NSView* label = [[[box superview] subviews] objectAtIndex:1];
    [StandInClick click:label];
    EXPECT_EQ(chosen_, Texts{"on"});
}

TEST_F(AppKitWindowHostTest, ReadsTheTextsOfALabelAsTheNameOfItsBox) {
    show(device());
    NSButton* box = driver_.button("");
    ASSERT_NE(box, nil);
    EXPECT_EQ(utf8String([box accessibilityLabelStandIn]), "Mouse, disconnected");
    NSView* label = [[[box superview] subviews] objectAtIndex:1];
    EXPECT_EQ([[label accessibilityChildrenStandIn] count], 0U);
}

TEST_F(AppKitWindowHostTest, ShowsALinkInTheColorOfItsLineAndOpensIt) {
    View link{Link{"ask@example.org", "mailto:ask@example.org"}, {}, {}, {}};
    show(View{Stack{}, {std::move(link)}, {}, {}}.foregroundColor(Color::secondary));
    NSButton* button = driver_.button("ask@example.org");
    ASSERT_NE(button, nil);
    EXPECT_EQ([button contentTintColorStandIn], [NSColor secondaryLabelColor]);
    EXPECT_EQ(utf8String([button accessibilityRoleStandIn]), utf8String(NSAccessibilityLinkRole));
    [button performClick:nil];
    EXPECT_EQ(driver_.opened(), Texts{"mailto:ask@example.org"});
}

TEST_F(AppKitWindowHostTest, CountsAMinimizedWindowAsVisible) {
    show(device());
    [driver_.window() miniaturize:nil];
    EXPECT_TRUE(window_->isVisible());
    window_->makeKeyAndOrderFront();
    EXPECT_FALSE([driver_.window() isMiniaturized]);
}

}  // namespace
}  // namespace kovra
