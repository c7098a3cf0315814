#pragma once

#import <Foundation/Foundation.h>

#include <functional>

// The target of a control's or a menu item's action: runs `work`. Controls do not retain their targets.
@interface KovraActionTarget : NSObject {
  @private
    std::function<void()> _work;
}
- (instancetype)initWithWork:(std::function<void()>)work;
- (void)perform:(id)sender;
@end
