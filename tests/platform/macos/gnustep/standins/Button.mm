#import "tests/platform/macos/gnustep/standins/Button.h"

#import "tests/platform/macos/gnustep/standins/Kept.h"

using kovra::keep;
using kovra::keptBy;

@implementation NSButton (StandIn)

+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action {
    NSButton* made = [[NSButton alloc] initWithFrame:NSZeroRect];
    [made setTitle:title];
    [made setTarget:target];
    [made setAction:action];
    return (id)made;
}

+ (instancetype)checkboxWithTitle:(NSString*)title target:(id)target action:(SEL)action {
    NSButton* made = [NSButton buttonWithTitle:title target:target action:action];
    [made setButtonType:NSSwitchButton];
    return (id)made;
}

+ (instancetype)radioButtonWithTitle:(NSString*)title target:(id)target action:(SEL)action {
    NSButton* made = [NSButton buttonWithTitle:title target:target action:action];
    [made setButtonType:NSRadioButton];
    return (id)made;
}

- (void)setContentTintColor:(NSColor*)color {
    keep(self, "tint", color);
}

- (NSColor*)contentTintColorStandIn {
    return keptBy(self, "tint");
}

@end
