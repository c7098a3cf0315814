// The parts of AppKit that BLE-kovra uses and GNUstep's headers lack. With them the sources compile against GNUstep's
// headers, an independent description of the same interfaces.
#pragma once

#import <AppKit/AppKit.h>

// Newer names of the same values.
#define NSEventMaskAny NSAnyEventMask
#define NSEventTypeApplicationDefined NSApplicationDefined

@interface NSApplication (Supplement)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
@end

@interface NSWindow (Supplement)
- (void)setStyleMask:(NSUInteger)mask;
- (void)setPreventsApplicationTerminationWhenModal:(BOOL)prevents;
- (void)setRestorable:(BOOL)isRestorable;
@end

@interface NSStatusItem (Supplement)
- (NSStatusBarButton*)button;
@end

@interface NSImage (Supplement)
+ (instancetype)imageWithSize:(NSSize)size flipped:(BOOL)flipped drawingHandler:(BOOL (^)(NSRect rect))drawingHandler;
- (void)setTemplate:(BOOL)isTemplate;
@end

typedef NSString* NSFontTextStyle;
extern "C" NSFontTextStyle const NSFontTextStyleBody;
extern "C" NSFontTextStyle const NSFontTextStyleCaption1;
extern "C" NSFontTextStyle const NSFontTextStyleCaption2;
extern "C" NSFontTextStyle const NSFontTextStyleHeadline;
extern "C" NSFontTextStyle const NSFontTextStyleSubheadline;

@interface NSFont (Supplement)
+ (NSFont*)preferredFontForTextStyle:(NSFontTextStyle)style options:(NSDictionary*)options;
@end

typedef NSString* NSAccessibilityRole;
extern "C" NSAccessibilityRole const NSAccessibilityLinkRole;
extern "C" NSAccessibilityRole const NSAccessibilityRadioGroupRole;

@interface NSLayoutConstraint (Supplement)
- (void)setPriority:(NSLayoutPriority)priority;
@end

@interface NSView (Supplement)
- (void)setTranslatesAutoresizingMaskIntoConstraints:(BOOL)translates;
- (void)addGestureRecognizer:(NSGestureRecognizer*)recognizer;
- (void)setContentHuggingPriority:(NSLayoutPriority)priority forOrientation:(NSLayoutConstraintOrientation)orientation;
- (void)setContentCompressionResistancePriority:(NSLayoutPriority)priority
                                 forOrientation:(NSLayoutConstraintOrientation)orientation;
- (NSLayoutXAxisAnchor*)leadingAnchor;
- (NSLayoutXAxisAnchor*)trailingAnchor;
- (NSLayoutXAxisAnchor*)centerXAnchor;
- (NSLayoutYAxisAnchor*)topAnchor;
- (NSLayoutYAxisAnchor*)bottomAnchor;
- (NSLayoutYAxisAnchor*)centerYAnchor;
- (NSLayoutDimension*)widthAnchor;
- (NSLayoutDimension*)heightAnchor;
- (void)setAccessibilityChildren:(NSArray*)children;
- (void)setAccessibilityElement:(BOOL)isElement;
- (void)setAccessibilityLabel:(NSString*)label;
- (void)setAccessibilityRole:(NSAccessibilityRole)role;
@end

@interface NSClickGestureRecognizer (Supplement)
- (instancetype)initWithTarget:(id)target action:(SEL)action;
@end

@interface NSButton (Supplement)
+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action;
+ (instancetype)checkboxWithTitle:(NSString*)title target:(id)target action:(SEL)action;
+ (instancetype)radioButtonWithTitle:(NSString*)title target:(id)target action:(SEL)action;
- (void)setContentTintColor:(NSColor*)color;
@end

@interface NSTextField (Supplement)
+ (instancetype)labelWithString:(NSString*)text;
+ (instancetype)wrappingLabelWithString:(NSString*)text;
- (void)setPreferredMaxLayoutWidth:(CGFloat)width;
@end

#ifndef _NSStackView_h_GNUSTEP_GUI_INCLUDE  // GNUstep's own, since some version after 0.30
typedef enum NSStackViewDistribution : NSInteger { NSStackViewDistributionFill = 0 } NSStackViewDistribution;

@interface NSStackView : NSView
+ (instancetype)stackViewWithViews:(NSArray<NSView*>*)views;
- (NSArray<NSView*>*)arrangedSubviews;
- (void)insertArrangedSubview:(NSView*)view atIndex:(NSInteger)index;
- (void)setOrientation:(NSUserInterfaceLayoutOrientation)orientation;
- (void)setAlignment:(NSLayoutAttribute)alignment;
- (void)setDistribution:(NSStackViewDistribution)distribution;
- (void)setSpacing:(CGFloat)spacing;
@end
#endif
