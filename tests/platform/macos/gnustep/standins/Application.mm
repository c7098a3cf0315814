#import "tests/platform/macos/gnustep/standins/Application.h"

#import "tests/platform/macos/gnustep/standins/Kept.h"

using kovra::keep;
using kovra::keptBy;

@implementation NSApplication (StandIn)

- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
    keep(self, "policy", [NSNumber numberWithInteger:policy]);
    return YES;
}

- (NSApplicationActivationPolicy)activationPolicyStandIn {
    return static_cast<NSApplicationActivationPolicy>([keptBy(self, "policy") integerValue]);
}

@end
