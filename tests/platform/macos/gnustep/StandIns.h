// What AppKit has and GNUstep lacks, as thin as the tests allow. The classes and categories of StandIns.mm record what
// the program asks for. They draw nothing, lay out nothing and decide nothing.
#pragma once

#import <AppKit/AppKit.h>
#import <ServiceManagement/ServiceManagement.h>

// GNUstep has no status bar. This one has at most one item.
@interface StandInStatusItem : NSStatusItem {
    NSMenu* _standInMenu;
    NSStatusBarButton* _standInButton;
}
// Returns the item in the status bar, or nil.
+ (StandInStatusItem*)shown;
@end

// The block that draws an image, with what else the program has said about it.
@interface StandInImage : NSImage
- (BOOL)isFlippedStandIn;
- (BOOL)isTemplateStandIn;
- (void)drawStandIn;
@end

// A recognizer that a test clicks.
@interface StandInClick : NSObject
// Clicks the view: the actions of its recognizers run.
+ (void)click:(NSView*)view;
@end

// The list of login items.
@interface StandInLoginItems : NSObject
+ (void)reset;
+ (void)setStatus:(SMAppServiceStatus)status;
+ (void)obstruct;
// Returns how often the page of the settings was opened.
+ (int)pagesOpened;
@end

// What a delegate of the application may answer on macOS.
@interface NSObject (StandInApplicationDelegate)
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)sender;
@end

// What the application was asked for.
@interface NSApplication (StandIn)
- (NSApplicationActivationPolicy)activationPolicyStandIn;
@end

// The properties of views that GNUstep's do not have.
@interface NSView (StandIn)
- (NSString*)accessibilityLabelStandIn;
- (NSString*)accessibilityRoleStandIn;
- (NSArray*)accessibilityChildrenStandIn;
@end

@interface NSButton (StandIn)
- (NSColor*)contentTintColorStandIn;
@end
