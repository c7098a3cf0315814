#import <AppKit/AppKit.h>

@implementation NSWindow (StandIn)

- (void)setStyleMask:(NSUInteger)mask {
    _styleMask = mask;
}

- (void)setPreventsApplicationTerminationWhenModal:(BOOL)prevents {
    static_cast<void>(prevents);
}

- (void)setRestorable:(BOOL)isRestorable {
    static_cast<void>(isRestorable);
}

@end
