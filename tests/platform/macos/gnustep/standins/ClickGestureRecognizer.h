#pragma once

#import <AppKit/AppKit.h>

// A recognizer that a test clicks.
@interface StandInClick : NSObject
// Clicks the view: the actions of its recognizers run.
+ (void)click:(NSView*)view;
@end
