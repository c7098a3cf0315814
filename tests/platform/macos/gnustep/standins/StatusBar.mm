#import "tests/platform/macos/gnustep/standins/StatusBar.h"

namespace {

StandInStatusItem* shownItem = nil;

}  // namespace

@implementation StandInStatusItem

+ (StandInStatusItem*)shown {
    return shownItem;
}

- (NSStatusBarButton*)button {
    if (_standInButton == nil) _standInButton = [[NSStatusBarButton alloc] initWithFrame:NSZeroRect];
    return _standInButton;
}

- (void)setMenu:(NSMenu*)menu {
    _standInMenu = [menu retain];
}

- (NSMenu*)menu {
    return _standInMenu;
}

@end

@implementation NSStatusBar (StandIn)

+ (NSStatusBar*)systemStatusBar {
    static NSStatusBar* bar = [[NSStatusBar alloc] init];
    return bar;
}

- (NSStatusItem*)statusItemWithLength:(CGFloat)length {
    static_cast<void>(length);
    shownItem = [[StandInStatusItem alloc] init];
    return shownItem;
}

- (void)removeStatusItem:(NSStatusItem*)item {
    if (item == shownItem) shownItem = nil;
}

@end
