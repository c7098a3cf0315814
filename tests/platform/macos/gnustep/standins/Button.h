#pragma once

#import <AppKit/AppKit.h>

// The property of a button that GNUstep's does not have.
@interface NSButton (StandIn)
- (NSColor*)contentTintColorStandIn;
@end
