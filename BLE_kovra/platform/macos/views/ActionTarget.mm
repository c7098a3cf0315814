#include "BLE_kovra/platform/macos/views/ActionTarget.h"

#include <utility>

#include "BLE_kovra/platform/macos/loop/CalledBack.h"

@implementation KovraActionTarget

- (instancetype)initWithWork:(std::function<void()>)work {
    self = [super init];
    if (self != nil) _work = std::move(work);
    return self;
}

- (void)perform:(id)sender {
    static_cast<void>(sender);
    const std::function<void()> work = _work;  // a copy: the work may release this object
    if (work) kovra::calledBack(work);
}

@end
