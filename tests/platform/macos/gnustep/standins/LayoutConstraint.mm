// Constraints, and the anchors of views that make them. None of them has an effect.

#import <AppKit/AppKit.h>

@implementation NSLayoutConstraint (StandIn)

+ (void)activateConstraints:(NSArray*)constraints {
    static_cast<void>(constraints);
}

- (void)setActive:(BOOL)isActive {
    static_cast<void>(isActive);
}

- (void)setPriority:(NSLayoutPriority)priority {
    static_cast<void>(priority);
}

@end

@implementation NSLayoutAnchor (StandIn)

- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor*)anchor {
    static_cast<void>(anchor);
    return [[NSLayoutConstraint alloc] init];
}

- (NSLayoutConstraint*)constraintGreaterThanOrEqualToAnchor:(NSLayoutAnchor*)anchor {
    return [self constraintEqualToAnchor:anchor];
}

- (NSLayoutConstraint*)constraintLessThanOrEqualToAnchor:(NSLayoutAnchor*)anchor {
    return [self constraintEqualToAnchor:anchor];
}

- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor*)anchor constant:(CGFloat)constant {
    static_cast<void>(constant);
    return [self constraintEqualToAnchor:anchor];
}

@end

@implementation NSLayoutDimension (StandIn)

- (NSLayoutConstraint*)constraintEqualToConstant:(CGFloat)constant {
    static_cast<void>(constant);
    return [[NSLayoutConstraint alloc] init];
}

- (NSLayoutConstraint*)constraintLessThanOrEqualToConstant:(CGFloat)constant {
    return [self constraintEqualToConstant:constant];
}

@end

@implementation NSView (StandInLayout)

- (void)setTranslatesAutoresizingMaskIntoConstraints:(BOOL)translates {
    static_cast<void>(translates);
}

- (void)setContentHuggingPriority:(NSLayoutPriority)priority forOrientation:(NSLayoutConstraintOrientation)orientation {
    static_cast<void>(priority);
    static_cast<void>(orientation);
}

- (void)setContentCompressionResistancePriority:(NSLayoutPriority)priority
                                 forOrientation:(NSLayoutConstraintOrientation)orientation {
    static_cast<void>(priority);
    static_cast<void>(orientation);
}

- (NSLayoutXAxisAnchor*)leadingAnchor {
    return [[NSLayoutXAxisAnchor alloc] init];
}

- (NSLayoutXAxisAnchor*)trailingAnchor {
    return [[NSLayoutXAxisAnchor alloc] init];
}

- (NSLayoutXAxisAnchor*)centerXAnchor {
    return [[NSLayoutXAxisAnchor alloc] init];
}

- (NSLayoutYAxisAnchor*)topAnchor {
    return [[NSLayoutYAxisAnchor alloc] init];
}

- (NSLayoutYAxisAnchor*)bottomAnchor {
    return [[NSLayoutYAxisAnchor alloc] init];
}

- (NSLayoutYAxisAnchor*)centerYAnchor {
    return [[NSLayoutYAxisAnchor alloc] init];
}

- (NSLayoutDimension*)widthAnchor {
    return [[NSLayoutDimension alloc] init];
}

- (NSLayoutDimension*)heightAnchor {
    return [[NSLayoutDimension alloc] init];
}

@end
