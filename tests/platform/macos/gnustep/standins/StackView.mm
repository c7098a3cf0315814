#import <AppKit/AppKit.h>

// GNUstep 0.32 has stack views, but cannot insert into an empty one.
#ifdef _NSStackView_h_GNUSTEP_GUI_INCLUDE
@implementation NSStackView (StandIn)
#else
@implementation NSStackView
#endif

+ (instancetype)stackViewWithViews:(NSArray*)views {
    NSStackView* made = [[NSStackView alloc] initWithFrame:NSZeroRect];
    for (NSView* view in views) [made addSubview:view];
    return (id)made;
}

- (NSArray*)arrangedSubviews {
    return [self subviews];
}

- (void)insertArrangedSubview:(NSView*)view atIndex:(NSInteger)index {
    [view retain];
    [view removeFromSuperview];
    NSArray* arranged = [self subviews];
    if (index < static_cast<NSInteger>([arranged count]))
        [self addSubview:view
              positioned:NSWindowBelow
              relativeTo:[arranged objectAtIndex:static_cast<NSUInteger>(index)]];
    else
        [self addSubview:view];
}

- (void)setOrientation:(NSUserInterfaceLayoutOrientation)orientation {
    static_cast<void>(orientation);
}

- (void)setAlignment:(NSLayoutAttribute)alignment {
    static_cast<void>(alignment);
}

- (void)setDistribution:(NSStackViewDistribution)distribution {
    static_cast<void>(distribution);
}

- (void)setSpacing:(CGFloat)spacing {
    static_cast<void>(spacing);
}

@end
