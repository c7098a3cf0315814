#pragma once

#import <AppKit/AppKit.h>

// The block that draws an image, with what else the program has said about it.
@interface StandInImage : NSImage
- (BOOL)isFlippedStandIn;
- (BOOL)isTemplateStandIn;
- (void)drawStandIn;
@end
