#pragma once

#import <AppKit/AppKit.h>

// What a delegate of the application may answer on macOS.
@interface NSObject (StandInApplicationDelegate)
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)sender;
@end

// What the application was asked for.
@interface NSApplication (StandIn)
- (NSApplicationActivationPolicy)activationPolicyStandIn;
@end
