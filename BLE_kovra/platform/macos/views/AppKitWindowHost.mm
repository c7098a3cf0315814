#include "BLE_kovra/platform/macos/views/AppKitWindowHost.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/Workspace.h"
#include "BLE_kovra/platform/macos/foundation/FoundationString.h"
#include "BLE_kovra/platform/macos/views/RealisedView.h"
#include "BLE_kovra/platform/macos/views/ViewLayout.h"

@interface KovraContentController : NSViewController
@end

@implementation KovraContentController

- (void)loadView {
    [self setView:[[NSView alloc] initWithFrame:NSZeroRect]];
}

@end

@interface KovraWindowDelegate : NSObject <NSWindowDelegate> {
    BOOL _isVisible;
}
@property(nonatomic) BOOL isVisible;
@end

@implementation KovraWindowDelegate

@synthesize isVisible = _isVisible;

- (void)windowWillClose:(NSNotification*)notification {
    static_cast<void>(notification);
    [self setIsVisible:NO];
}

@end

namespace kovra {

namespace {

class AppKitWindow : public Window {
  public:
    AppKitWindow(MainQueue& queue, Workspace& workspace, View content)
        : queue_(queue),
          site_{[&workspace](const std::string& url) { workspace.open(url); }, [this] { showAgainSoon(); }},
          controller_([[KovraContentController alloc] init]),
          window_([NSWindow windowWithContentViewController:controller_]),
          delegate_([[KovraWindowDelegate alloc] init]) {
        [window_ setDelegate:delegate_];
        [window_ setRestorable:NO];  // the program decides when the window is open
        [window_ setAutorecalculatesKeyViewLoop:YES];
        setContent(std::move(content));
    }
    ~AppKitWindow() override {
        [window_ setDelegate:nil];
        [window_ setReleasedWhenClosed:NO];  // this object holds the only reference
        [window_ close];
    }
    AppKitWindow(const AppKitWindow&) = delete;
    AppKitWindow& operator=(const AppKitWindow&) = delete;

    void setTitle(const std::string& title) override {
        [window_ setTitle:foundationString(title)];
        [controller_ setTitle:foundationString(title)];  // the window copies the title of its controller
    }
    void setStyleMask(unsigned mask) override { [window_ setStyleMask:static_cast<NSWindowStyleMask>(mask)]; }
    void setContentSize(Size size) override { [window_ setContentSize:NSMakeSize(size.width, size.height)]; }
    void setReleasedWhenClosed(bool isReleased) override { [window_ setReleasedWhenClosed:isReleased]; }
    void setOnShown(std::function<void()> onShown) override { onShown_ = std::move(onShown); }
    void center() override { [window_ center]; }

    void makeKeyAndOrderFront() override {
        [delegate_ setIsVisible:YES];
        if ([window_ isMiniaturized]) [window_ deminiaturize:nil];
        [window_ makeKeyAndOrderFront:nil];
        [window_ orderFrontRegardless];  // works even if the system does not let the program come to the front
        if (onShown_) queue_.async(onShown_);
    }
    bool isVisible() const override { return [delegate_ isVisible]; }

    void setContent(View content) override {
        content_ = std::move(content);
        show();
    }

  private:
    void show() {
        const Surroundings around;
        if (root_ && root_->isFor(content_)) return root_->show(content_, around);
        if (root_) [root_->outermost() removeFromSuperview];
        root_ = realise(content_, site_, around);
        NSView* shown = root_->outermost();
        centerInside([controller_ view], shown);
    }
    void showAgainSoon() {
        queue_.async([weak = std::weak_ptr(self_)] {
            if (const auto self = weak.lock()) (*self)->show();
        });
    }

    MainQueue& queue_;
    ViewSite site_;
    View content_;
    std::function<void()> onShown_;
    std::unique_ptr<RealisedView> root_;
    KovraContentController* controller_;
    NSWindow* window_;
    KovraWindowDelegate* delegate_;
    // Tells a queued block whether the window still exists.
    std::shared_ptr<AppKitWindow*> self_ = std::make_shared<AppKitWindow*>(this);
};

}  // namespace

std::unique_ptr<Window> AppKitWindowHost::makeWindow(View content) {
    return std::make_unique<AppKitWindow>(queue_, workspace_, std::move(content));
}

}  // namespace kovra
