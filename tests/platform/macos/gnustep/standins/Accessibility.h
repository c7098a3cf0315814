#pragma once

#import <AppKit/AppKit.h>

// What a screen reader would read of a view.
@interface NSView (StandInAccessibility)
- (NSString*)accessibilityLabelStandIn;
- (NSString*)accessibilityRoleStandIn;
- (NSArray*)accessibilityChildrenStandIn;
@end
