#pragma once

#import <AppKit/AppKit.h>

// GNUstep has no status bar. This one has at most one item.
@interface StandInStatusItem : NSStatusItem {
    NSMenu* _standInMenu;
    NSStatusBarButton* _standInButton;
}
// Returns the item in the status bar, or nil.
+ (StandInStatusItem*)shown;
@end
