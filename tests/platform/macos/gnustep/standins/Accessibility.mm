#import "tests/platform/macos/gnustep/standins/Accessibility.h"

#import "tests/platform/macos/gnustep/standins/Kept.h"

using kovra::keep;
using kovra::keptBy;

NSAccessibilityRole const NSAccessibilityLinkRole = @"link";
NSAccessibilityRole const NSAccessibilityRadioGroupRole = @"radio group";

@implementation NSView (StandInAccessibility)

- (void)setAccessibilityChildren:(NSArray*)children {
    keep(self, "accessibilityChildren", children);
}

- (void)setAccessibilityElement:(BOOL)isElement {
    static_cast<void>(isElement);
}

- (void)setAccessibilityLabel:(NSString*)label {
    keep(self, "accessibilityLabel", label);
}

- (void)setAccessibilityRole:(NSAccessibilityRole)role {
    keep(self, "accessibilityRole", role);
}

- (NSString*)accessibilityLabelStandIn {
    return keptBy(self, "accessibilityLabel");
}

- (NSString*)accessibilityRoleStandIn {
    return keptBy(self, "accessibilityRole");
}

- (NSArray*)accessibilityChildrenStandIn {
    return keptBy(self, "accessibilityChildren");
}

@end
