#include "BLE_kovra/platform/macos/application/AppKitStatusBar.h"

#import <AppKit/AppKit.h>

#include "BLE_kovra/platform/macos/application/DrawingImage.h"
#include "BLE_kovra/platform/macos/foundation/FoundationString.h"
#include "BLE_kovra/platform/macos/views/ActionTarget.h"

namespace kovra {

namespace {

NSControlStateValue stateValue(MenuItemState state) {
    return state == MenuItemState::on ? NSControlStateValueOn : NSControlStateValueOff;
}

NSMenuItem* menuItem(const MenuItem& item) {
    if (item.isSeparator) return [NSMenuItem separatorItem];
    NSMenuItem* made = [[NSMenuItem alloc] initWithTitle:foundationString(item.title)
                                                  action:item.action ? @selector(perform:) : nullptr
                                           keyEquivalent:foundationString(item.keyEquivalent)];
    if (item.action) {
        KovraActionTarget* target = [[KovraActionTarget alloc] initWithWork:item.action->perform];
        [made setTarget:target];
        [made setRepresentedObject:target];  // the item retains the target here
    }
    if (item.state) [made setState:stateValue(*item.state)];
    [made setTag:item.tag];
    [made setEnabled:item.isEnabled];
    return made;
}

class AppKitStatusItem : public StatusItem, private StatusBarButton {
  public:
    explicit AppKitStatusItem(double length)
        : item_([[NSStatusBar systemStatusBar] statusItemWithLength:static_cast<CGFloat>(length)]) {}
    ~AppKitStatusItem() override { [[NSStatusBar systemStatusBar] removeStatusItem:item_]; }
    AppKitStatusItem(const AppKitStatusItem&) = delete;
    AppKitStatusItem& operator=(const AppKitStatusItem&) = delete;

    StatusBarButton* button() override { return [item_ button] == nil ? nullptr : this; }
    void setMenu(Menu menu) override {
        NSMenu* made = [[NSMenu alloc] initWithTitle:@""];
        [made setAutoenablesItems:NO];
        for (const MenuItem& item : menu.items) [made addItem:menuItem(item)];
        [item_ setMenu:made];
    }
    void setState(int tag, MenuItemState state) override {
        [[[item_ menu] itemWithTag:tag] setState:stateValue(state)];
    }

  private:
    void setImage(const Drawing& image) override { [[item_ button] setImage:drawingImage(image)]; }
    bool hasImage() const override { return [[item_ button] image] != nil; }
    void setImageIsTemplate(bool isTemplate) override { [[[item_ button] image] setTemplate:isTemplate]; }
    void setToolTip(const std::string& text) override {
        [[item_ button] setToolTip:foundationString(text)];
        [[item_ button] setAccessibilityLabel:foundationString(text)];
    }

    NSStatusItem* item_;  // the status bar does not retain it
};

}  // namespace

std::unique_ptr<StatusItem> AppKitStatusBar::statusItem(double length) {
    return std::make_unique<AppKitStatusItem>(length);
}

}  // namespace kovra
