#pragma once

#import <AppKit/AppKit.h>

#include <functional>

// Calls a function from the run loop a hundred times a second, also while an alert is open, and in nested loops.
@interface KovraEachTurn : NSObject {
    std::function<void()> _turn;
    BOOL _isStopped;
}
- (instancetype)initWithTurn:(std::function<void()>)turn;
- (void)stop;
@end
