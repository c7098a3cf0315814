#include "BLE_kovra/platform/macos/application/AppKitStatusBar.h"

#include <memory>
#include <string>
#include <vector>

#include "tests/contracts/StatusBarContract.h"
#include "tests/platform/macos/gnustep/Texts.h"
#include "tests/platform/macos/gnustep/standins/Accessibility.h"
#include "tests/platform/macos/gnustep/standins/Image.h"
#include "tests/platform/macos/gnustep/standins/StatusBar.h"

namespace kovra {
namespace {

class AppKitStatusBarDriver {
  public:
    StatusBar& bar() { return bar_; }
    void settle() {}

    bool isThere() const { return [StandInStatusItem shown] != nil; }
    // AppKit's image has no name: ShowsTheLastImage is left out, and AppKitStatusBarTest looks at what is drawn.
    std::string icon() const { return {}; }
    std::string toolTip() const { return utf8String([[[StandInStatusItem shown] button] toolTip]); }
    std::vector<std::string> menu() const {
        std::vector<std::string> lines;
        for (NSMenuItem* item in [[[StandInStatusItem shown] menu] itemArray]) lines.push_back(line(item));
        return lines;
    }
    void click(std::size_t position) {
        [[[StandInStatusItem shown] menu] performActionForItemAtIndex:static_cast<NSInteger>(position)];
    }

  private:
    static std::string line(NSMenuItem* item) {
        if ([item isSeparatorItem]) return "---";
        std::string text = utf8String([item title]);
        // For AppKit every item has a state. Only those with a tag show it here.
        if ([item tag] != 0) text = ([item state] == NSControlStateValueOn ? "[x] " : "[ ] ") + text;
        if ([[item keyEquivalent] length] > 0) text += " (" + utf8String([item keyEquivalent]) + ")";
        return [item isEnabled] ? text : "(" + text + ")";
    }

    AppKitStatusBar bar_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(AppKitStatusBar, StatusBarContract, AppKitStatusBarDriver);

class AppKitStatusBarTest : public testing::Test {
  protected:
    static Drawing bottomLine() {
        return {.name = "line", .size = {18, 18}, .strokes = {{Segment{{2, 4}, {16, 4}}, 2}}};
    }
    StandInImage* image() { return static_cast<StandInImage*>([[[StandInStatusItem shown] button] image]); }

    AppKitStatusBar bar_;
    std::unique_ptr<StatusItem> item_ = bar_.statusItem(StatusBar::variableLength);
};

TEST_F(AppKitStatusBarTest, DrawsItsImageWithTheOriginAtTheBottom) {
    item_->button()->setImage(bottomLine());
    EXPECT_FALSE([image() isFlippedStandIn]);
    NSImage* canvas = [[NSImage alloc] initWithSize:NSMakeSize(18, 18)];
    [canvas lockFocus];
    [image() drawStandIn];
    NSBitmapImageRep* seen = [[NSBitmapImageRep alloc] initWithFocusedViewRect:NSMakeRect(0, 0, 18, 18)];
    [canvas unlockFocus];
    EXPECT_GT([[seen colorAtX:9 y:13] alphaComponent], 0.9) << "rows are counted from the top";
    EXPECT_LT([[seen colorAtX:9 y:4] alphaComponent], 0.1);
}

TEST_F(AppKitStatusBarTest, MarksItsImageAsATemplate) {
    item_->button()->setImage(bottomLine());
    item_->button()->setImageIsTemplate(true);
    EXPECT_TRUE([image() isTemplateStandIn]);
    item_->button()->setImageIsTemplate(false);
    EXPECT_FALSE([image() isTemplateStandIn]);
}

TEST_F(AppKitStatusBarTest, ReadsItsToolTipToScreenReaders) {
    item_->button()->setToolTip("Trackpad muted");
    EXPECT_EQ(utf8String([[[StandInStatusItem shown] button] accessibilityLabelStandIn]), "Trackpad muted");
}

// A menu item retains the object that it represents, and no target.
TEST_F(AppKitStatusBarTest, LetsEachMenuItemOwnItsTarget) {
    MenuItem entry;
    entry.title = "Entry";
    entry.action = MenuAction{"entry", [] {}};
    item_->setMenu({{entry}});
    NSMenuItem* made = [[[[StandInStatusItem shown] menu] itemArray] objectAtIndex:0];
    EXPECT_NE([made target], nil);
    EXPECT_EQ([made representedObject], [made target]);
}

}  // namespace
}  // namespace kovra
