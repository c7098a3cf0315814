#import "tests/platform/macos/gnustep/EachTurn.h"

#include <utility>

@implementation KovraEachTurn

- (instancetype)initWithTurn:(std::function<void()>)turn {
    self = [super init];
    _turn = std::move(turn);
    [self schedule];
    return self;
}

- (void)schedule {
    NSTimer* timer = [NSTimer timerWithTimeInterval:0.01 target:self selector:@selector(fire:) userInfo:nil repeats:NO];
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSDefaultRunLoopMode];
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSModalPanelRunLoopMode];
}

- (void)stop {
    _isStopped = YES;
}

- (void)fire:(NSTimer*)timer {
    static_cast<void>(timer);
    if (_isStopped) return;
    [self schedule];  // first, since the turn may run the loop nested
    _turn();
}

@end
