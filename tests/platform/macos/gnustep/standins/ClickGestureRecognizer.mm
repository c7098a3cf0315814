#import "tests/platform/macos/gnustep/standins/ClickGestureRecognizer.h"

#import "tests/platform/macos/gnustep/standins/Kept.h"

using kovra::keep;
using kovra::keptBy;

@implementation NSClickGestureRecognizer (StandIn)

- (instancetype)initWithTarget:(id)target action:(SEL)action {
    self = [super init];
    keep(self, "target", target);
    keep(self, "action", NSStringFromSelector(action));
    return self;
}

@end

@implementation NSView (StandInGestures)

- (void)addGestureRecognizer:(NSGestureRecognizer*)recognizer {
    NSArray* present = keptBy(self, "recognizers");
    keep(self, "recognizers",
         present == nil ? [NSArray arrayWithObject:recognizer] : [present arrayByAddingObject:recognizer]);
}

@end

@implementation StandInClick

+ (void)click:(NSView*)view {
    for (id recognizer in keptBy(view, "recognizers")) {
        [keptBy(recognizer, "target") performSelector:NSSelectorFromString(keptBy(recognizer, "action"))
                                           withObject:recognizer];
    }
}

@end
