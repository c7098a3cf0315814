#import <AppKit/AppKit.h>

@implementation NSTextField (StandIn)

+ (instancetype)labelWithString:(NSString*)text {
    NSTextField* made = [[NSTextField alloc] initWithFrame:NSZeroRect];
    [made setStringValue:text];
    [made setEditable:NO];
    return (id)made;
}

+ (instancetype)wrappingLabelWithString:(NSString*)text {
    return [self labelWithString:text];
}

- (void)setPreferredMaxLayoutWidth:(CGFloat)width {
    static_cast<void>(width);
}

@end
