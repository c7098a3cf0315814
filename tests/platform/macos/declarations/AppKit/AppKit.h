// The parts of AppKit that BLE-kovra uses, declared for machines that are not Macs.
#pragma once

#import <Foundation/Foundation.h>

#define KOVRA_SINCE(version) __attribute__((availability(macos, introduced = version)))

@class NSApplication, NSGraphicsContext, NSLayoutDimension, NSLayoutXAxisAnchor, NSLayoutYAxisAnchor, NSFont, NSImage,
    NSMenu, NSMenuItem, NSStatusBarButton, NSTextField, NSView, NSWindow;

// Application

typedef enum NSApplicationActivationPolicy : NSInteger {
    NSApplicationActivationPolicyRegular = 0,
    NSApplicationActivationPolicyAccessory = 1,
    NSApplicationActivationPolicyProhibited = 2,
} NSApplicationActivationPolicy;

typedef enum NSEventType : NSUInteger { NSEventTypeApplicationDefined = 15 } NSEventType;
typedef NSUInteger NSEventModifierFlags;
typedef unsigned long long NSEventMask;
enum : NSEventMask { NSEventMaskAny = ~0UL };

@interface NSEvent : NSObject
+ (NSEvent*)otherEventWithType:(NSEventType)type
                      location:(NSPoint)location
                 modifierFlags:(NSEventModifierFlags)flags
                     timestamp:(NSTimeInterval)time
                  windowNumber:(NSInteger)windowNumber
                       context:(NSGraphicsContext*)context
                       subtype:(short)subtype
                         data1:(NSInteger)first
                         data2:(NSInteger)second;
@end

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender hasVisibleWindows:(BOOL)hasVisibleWindows;
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)sender KOVRA_SINCE(12.0);
- (void)applicationWillTerminate:(NSNotification*)notification;
@end

@interface NSApplication : NSObject
+ (NSApplication*)sharedApplication;
- (void)setDelegate:(id<NSApplicationDelegate>)delegate;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)activate KOVRA_SINCE(14.0);
- (void)activateIgnoringOtherApps:(BOOL)ignoringOtherApps;
- (void)setMainMenu:(NSMenu*)menu;
- (NSWindow*)modalWindow;
- (NSEvent*)nextEventMatchingMask:(NSEventMask)mask
                        untilDate:(NSDate*)expiration
                           inMode:(NSRunLoopMode)mode
                          dequeue:(BOOL)dequeue;
- (void)postEvent:(NSEvent*)event atStart:(BOOL)atStart;
- (void)run;
- (void)sendEvent:(NSEvent*)event;
- (void)terminate:(id)sender;
@end

extern "C" void NSBeep(void);

// Workspace

extern "C" NSNotificationName const NSWorkspaceDidWakeNotification;
extern "C" NSNotificationName const NSWorkspaceSessionDidBecomeActiveNotification;

@interface NSWorkspace : NSObject
+ (NSWorkspace*)sharedWorkspace;
- (NSNotificationCenter*)notificationCenter;
- (BOOL)openURL:(NSURL*)url;
@end

// Status bar and menus

typedef NSInteger NSControlStateValue;
enum : NSControlStateValue { NSControlStateValueOff = 0, NSControlStateValueOn = 1 };

@interface NSMenuItem : NSObject
+ (NSMenuItem*)separatorItem;
- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)keyEquivalent;
- (void)setTarget:(id)target;
- (void)setRepresentedObject:(id)object;
- (void)setTag:(NSInteger)tag;
- (void)setState:(NSControlStateValue)state;
- (void)setEnabled:(BOOL)enabled;
- (void)setSubmenu:(NSMenu*)submenu;
@end

@interface NSMenu : NSObject
- (instancetype)initWithTitle:(NSString*)title;
- (void)addItem:(NSMenuItem*)item;
- (NSMenuItem*)itemWithTag:(NSInteger)tag;
- (void)setAutoenablesItems:(BOOL)autoenablesItems;
@end

@interface NSStatusItem : NSObject
- (NSStatusBarButton*)button KOVRA_SINCE(10.10);
- (void)setMenu:(NSMenu*)menu;
- (NSMenu*)menu;
@end

@interface NSStatusBar : NSObject
+ (NSStatusBar*)systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end

// Colors, fonts, drawing

@interface NSColor : NSObject
+ (NSColor*)blackColor;
+ (NSColor*)labelColor;
+ (NSColor*)secondaryLabelColor;
+ (NSColor*)systemGreenColor;
+ (NSColor*)systemGrayColor;
- (NSColor*)colorWithAlphaComponent:(CGFloat)alpha;
- (void)set;
@end

typedef NSString* NSFontTextStyle;
extern "C" NSFontTextStyle const NSFontTextStyleBody;
extern "C" NSFontTextStyle const NSFontTextStyleCaption1;
extern "C" NSFontTextStyle const NSFontTextStyleCaption2;
extern "C" NSFontTextStyle const NSFontTextStyleHeadline;
extern "C" NSFontTextStyle const NSFontTextStyleSubheadline;

@interface NSFont : NSObject
+ (NSFont*)preferredFontForTextStyle:(NSFontTextStyle)style options:(NSDictionary*)options KOVRA_SINCE(11.0);
@end

typedef NSUInteger NSFontTraitMask;
enum : NSFontTraitMask { NSBoldFontMask = 2 };

@interface NSFontManager : NSObject
+ (NSFontManager*)sharedFontManager;
- (NSFont*)convertFont:(NSFont*)font toHaveTrait:(NSFontTraitMask)trait;
@end

@interface NSBezierPath : NSObject
+ (NSBezierPath*)bezierPath;
+ (NSBezierPath*)bezierPathWithOvalInRect:(NSRect)rect;
+ (NSBezierPath*)bezierPathWithRoundedRect:(NSRect)rect xRadius:(CGFloat)xRadius yRadius:(CGFloat)yRadius;
- (void)moveToPoint:(NSPoint)point;
- (void)lineToPoint:(NSPoint)point;
- (void)setLineWidth:(CGFloat)width;
- (void)stroke;
- (void)fill;
@end

@interface NSImage : NSObject
+ (NSImage*)imageWithSize:(NSSize)size flipped:(BOOL)flipped drawingHandler:(BOOL (^)(NSRect rect))drawingHandler;
- (void)setTemplate:(BOOL)isTemplate;
@end

// Layout

typedef float NSLayoutPriority;
enum { NSLayoutPriorityRequired = 1000 };

typedef enum NSLayoutAttribute : NSInteger {
    NSLayoutAttributeTop = 3,
    NSLayoutAttributeLeading = 5,
    NSLayoutAttributeCenterX = 9,
    NSLayoutAttributeCenterY = 10,
} NSLayoutAttribute;

typedef enum NSLayoutConstraintOrientation : NSInteger {
    NSLayoutConstraintOrientationHorizontal = 0,
    NSLayoutConstraintOrientationVertical = 1,
} NSLayoutConstraintOrientation;

typedef enum NSUserInterfaceLayoutOrientation : NSInteger {
    NSUserInterfaceLayoutOrientationHorizontal = 0,
    NSUserInterfaceLayoutOrientationVertical = 1,
} NSUserInterfaceLayoutOrientation;

@interface NSLayoutConstraint : NSObject
+ (void)activateConstraints:(NSArray<NSLayoutConstraint*>*)constraints;
- (void)setActive:(BOOL)active;
- (void)setPriority:(NSLayoutPriority)priority;
@end

@interface NSLayoutAnchor<AnchorType> : NSObject
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor<AnchorType>*)anchor;
- (NSLayoutConstraint*)constraintGreaterThanOrEqualToAnchor:(NSLayoutAnchor<AnchorType>*)anchor;
- (NSLayoutConstraint*)constraintLessThanOrEqualToAnchor:(NSLayoutAnchor<AnchorType>*)anchor;
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor<AnchorType>*)anchor constant:(CGFloat)constant;
@end

@interface NSLayoutXAxisAnchor : NSLayoutAnchor <NSLayoutXAxisAnchor*>
@end

@interface NSLayoutYAxisAnchor : NSLayoutAnchor <NSLayoutYAxisAnchor*>
@end

@interface NSLayoutDimension : NSLayoutAnchor <NSLayoutDimension*>
- (NSLayoutConstraint*)constraintEqualToConstant:(CGFloat)constant;
- (NSLayoutConstraint*)constraintLessThanOrEqualToConstant:(CGFloat)constant;
@end

// Views

typedef NSString* NSAccessibilityRole;
extern "C" NSAccessibilityRole const NSAccessibilityLinkRole;
extern "C" NSAccessibilityRole const NSAccessibilityRadioGroupRole;

@interface NSGestureRecognizer : NSObject
- (instancetype)initWithTarget:(id)target action:(SEL)action;
@end

@interface NSClickGestureRecognizer : NSGestureRecognizer
@end

@interface NSView : NSObject
- (instancetype)initWithFrame:(NSRect)frame;
- (NSRect)bounds;
- (void)drawRect:(NSRect)dirtyRect;
- (void)setNeedsDisplay:(BOOL)needsDisplay;
- (BOOL)isFlipped;
- (NSView*)superview;
- (void)addSubview:(NSView*)view;
- (void)removeFromSuperview;
- (void)setToolTip:(NSString*)text;
- (void)addGestureRecognizer:(NSGestureRecognizer*)recognizer;
- (void)setTranslatesAutoresizingMaskIntoConstraints:(BOOL)translates;
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

@interface NSControl : NSView
- (void)setFont:(NSFont*)font;
- (void)setStringValue:(NSString*)text;
- (void)performClick:(id)sender;
@end

@interface NSButton : NSControl
+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action;
+ (instancetype)checkboxWithTitle:(NSString*)title target:(id)target action:(SEL)action;
+ (instancetype)radioButtonWithTitle:(NSString*)title target:(id)target action:(SEL)action;
- (NSControlStateValue)state;
- (void)setState:(NSControlStateValue)state;
- (void)setTitle:(NSString*)title;
- (void)setBordered:(BOOL)bordered;
- (void)setContentTintColor:(NSColor*)color KOVRA_SINCE(10.14);
- (NSImage*)image;
- (void)setImage:(NSImage*)image;
@end

@interface NSStatusBarButton : NSButton
@end

@interface NSTextField : NSControl
+ (instancetype)labelWithString:(NSString*)text;
+ (instancetype)wrappingLabelWithString:(NSString*)text;
- (void)setTextColor:(NSColor*)color;
- (void)setSelectable:(BOOL)selectable;
- (void)setPreferredMaxLayoutWidth:(CGFloat)width;
@end

typedef enum NSBoxType : NSUInteger { NSBoxSeparator = 2 } NSBoxType;

@interface NSBox : NSView
- (void)setBoxType:(NSBoxType)type;
@end

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

typedef enum NSBorderType : NSUInteger { NSNoBorder = 0 } NSBorderType;

@interface NSClipView : NSView
@end

@interface NSScrollView : NSView
- (NSClipView*)contentView;
- (void)setDocumentView:(NSView*)view;
- (void)setHasVerticalScroller:(BOOL)hasScroller;
- (void)setAutohidesScrollers:(BOOL)autohides;
- (void)setDrawsBackground:(BOOL)draws;
- (void)setBorderType:(NSBorderType)type;
@end

// Windows and alerts

@interface NSViewController : NSObject
- (void)loadView;
- (NSView*)view;
- (void)setView:(NSView*)view;
- (void)setTitle:(NSString*)title;
@end

@protocol NSWindowDelegate <NSObject>
@optional
- (void)windowWillClose:(NSNotification*)notification;
@end

typedef NSUInteger NSWindowStyleMask;
typedef NSInteger NSWindowLevel;
enum : NSWindowLevel { NSFloatingWindowLevel = 3 };

@interface NSWindow : NSObject
+ (instancetype)windowWithContentViewController:(NSViewController*)controller;
- (void)setDelegate:(id<NSWindowDelegate>)delegate;
- (void)setTitle:(NSString*)title;
- (void)setStyleMask:(NSWindowStyleMask)mask;
- (void)setContentSize:(NSSize)size;
- (void)setReleasedWhenClosed:(BOOL)isReleased;
- (void)setRestorable:(BOOL)isRestorable;
- (void)setAutorecalculatesKeyViewLoop:(BOOL)autorecalculates;
- (void)center;
- (void)makeKeyAndOrderFront:(id)sender;
- (void)orderFrontRegardless;
- (BOOL)isMiniaturized;
- (void)deminiaturize:(id)sender;
- (void)close;
- (void)performClose:(id)sender;
- (void)performMiniaturize:(id)sender;
- (void)setLevel:(NSWindowLevel)level;
- (void)setPreventsApplicationTerminationWhenModal:(BOOL)prevents;
@end

typedef NSInteger NSModalResponse;
enum : NSModalResponse { NSAlertFirstButtonReturn = 1000, NSAlertSecondButtonReturn = 1001 };

@interface NSAlert : NSObject
- (void)setMessageText:(NSString*)text;
- (void)setInformativeText:(NSString*)text;
- (NSButton*)addButtonWithTitle:(NSString*)title;
- (NSWindow*)window;
- (NSModalResponse)runModal;
@end
