#import "tests/platform/macos/gnustep/StandIns.h"

#include <Block.h>
#import <objc/runtime.h>

#include <map>
#include <string>
#include <utility>

namespace {

// The values that categories cannot keep in instance variables: by object and name. Nothing is ever released here, as
// nothing is in these tests, which are compiled without ARC.
std::map<std::pair<const void*, std::string>, id> kept;

void keep(id object, const char* name, id value) { kept[{(const void*)object, name}] = [value retain]; }

id keptBy(id object, const char* name) {
    const auto found = kept.find({(const void*)object, name});
    return found == kept.end() ? nil : found->second;
}

struct ImageFacts {
    BOOL(^handler)(NSRect) = nullptr;
    BOOL isFlipped = NO;
    BOOL isTemplate = NO;
};
std::map<id, ImageFacts> images;

StandInStatusItem* shownItem = nil;

struct LoginItems {
    SMAppServiceStatus status = SMAppServiceStatusNotRegistered;
    bool isObstructed = false;
    int pagesOpened = 0;
};
LoginItems loginItems;

}  // namespace

NSFontTextStyle const NSFontTextStyleBody = @"body";
NSFontTextStyle const NSFontTextStyleCaption1 = @"caption1";
NSFontTextStyle const NSFontTextStyleCaption2 = @"caption2";
NSFontTextStyle const NSFontTextStyleHeadline = @"headline";
NSFontTextStyle const NSFontTextStyleSubheadline = @"subheadline";
NSAccessibilityRole const NSAccessibilityLinkRole = @"link";
NSAccessibilityRole const NSAccessibilityRadioGroupRole = @"radio group";

@implementation StandInStatusItem

+ (StandInStatusItem*)shown {
    return shownItem;
}

- (NSStatusBarButton*)button {
    if (_standInButton == nil) _standInButton = [[NSStatusBarButton alloc] initWithFrame:NSZeroRect];
    return _standInButton;
}

- (void)setMenu:(NSMenu*)menu {
    _standInMenu = [menu retain];
}

- (NSMenu*)menu {
    return _standInMenu;
}

@end

@implementation NSStatusBar (StandIn)

+ (NSStatusBar*)systemStatusBar {
    static NSStatusBar* bar = [[NSStatusBar alloc] init];
    return bar;
}

- (NSStatusItem*)statusItemWithLength:(CGFloat)length {
    static_cast<void>(length);
    shownItem = [[StandInStatusItem alloc] init];
    return shownItem;
}

- (void)removeStatusItem:(NSStatusItem*)item {
    if (item == shownItem) shownItem = nil;
}

@end

@implementation StandInImage

- (instancetype)initWithSize:(NSSize)size handler:(BOOL (^)(NSRect))handler flipped:(BOOL)isFlipped {
    self = [super initWithSize:size];
    images[self] = {.handler = Block_copy(handler), .isFlipped = isFlipped};
    return self;
}

- (void)setTemplate:(BOOL)isTemplate {
    images[self].isTemplate = isTemplate;
}

- (BOOL)isFlippedStandIn {
    return images[self].isFlipped;
}

- (BOOL)isTemplateStandIn {
    return images[self].isTemplate;
}

- (void)drawStandIn {
    const NSSize size = [self size];
    images[self].handler(NSMakeRect(0, 0, size.width, size.height));
}

@end

@implementation NSImage (StandIn)

+ (instancetype)imageWithSize:(NSSize)size flipped:(BOOL)flipped drawingHandler:(BOOL (^)(NSRect rect))handler {
    return (id)[[StandInImage alloc] initWithSize:size handler:handler flipped:flipped];
}

@end

@implementation NSClickGestureRecognizer (StandIn)

- (instancetype)initWithTarget:(id)target action:(SEL)action {
    self = [super init];
    keep(self, "target", target);
    keep(self, "action", NSStringFromSelector(action));
    return self;
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

@implementation NSApplication (StandIn)

- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
    keep(self, "policy", [NSNumber numberWithInteger:policy]);
    return YES;
}

- (NSApplicationActivationPolicy)activationPolicyStandIn {
    return static_cast<NSApplicationActivationPolicy>([keptBy(self, "policy") integerValue]);
}

@end

// GNUstep's workspace starts a daemon to send notifications to other programs. This one sends them in this process.
@implementation NSWorkspace (StandIn)

+ (NSWorkspace*)sharedWorkspace {
    static NSWorkspace* workspace = (NSWorkspace*)NSAllocateObject(self, 0, NSDefaultMallocZone());
    return workspace;
}

- (NSNotificationCenter*)notificationCenter {
    static NSNotificationCenter* center = [[NSNotificationCenter alloc] init];
    return center;
}

@end

@implementation NSWindow (StandIn)

- (void)setStyleMask:(NSUInteger)mask {
    _styleMask = mask;
}

- (void)setPreventsApplicationTerminationWhenModal:(BOOL)prevents {
    static_cast<void>(prevents);
}

- (void)setRestorable:(BOOL)isRestorable {
    static_cast<void>(isRestorable);
}

@end

@implementation NSFont (StandIn)

+ (NSFont*)preferredFontForTextStyle:(NSFontTextStyle)style options:(NSDictionary*)options {
    static_cast<void>(style);
    static_cast<void>(options);
    return [NSFont systemFontOfSize:12];
}

@end

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

@implementation NSView (StandIn)

- (void)setTranslatesAutoresizingMaskIntoConstraints:(BOOL)translates {
    static_cast<void>(translates);
}

- (void)addGestureRecognizer:(NSGestureRecognizer*)recognizer {
    NSArray* present = keptBy(self, "recognizers");
    keep(self, "recognizers",
         present == nil ? [NSArray arrayWithObject:recognizer] : [present arrayByAddingObject:recognizer]);
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

@implementation SMAppService

+ (SMAppService*)mainAppService {
    static SMAppService* service = [[SMAppService alloc] init];
    return service;
}

+ (void)openSystemSettingsLoginItems {
    ++loginItems.pagesOpened;
}

- (SMAppServiceStatus)status {
    return loginItems.status;
}

- (BOOL)setStatus:(SMAppServiceStatus)status error:(NSError**)error {
    if (loginItems.isObstructed) {
        *error = [NSError errorWithDomain:@"StandIn"
                                     code:1
                                 userInfo:@{NSLocalizedDescriptionKey : @"Operation not permitted"}];
        return NO;
    }
    if (loginItems.status != SMAppServiceStatusRequiresApproval) loginItems.status = status;
    return YES;
}

- (BOOL)registerAndReturnError:(NSError**)error {
    return [self setStatus:SMAppServiceStatusEnabled error:error];
}

- (BOOL)unregisterAndReturnError:(NSError**)error {
    return [self setStatus:SMAppServiceStatusNotRegistered error:error];
}

@end

@implementation StandInLoginItems

+ (void)reset {
    loginItems = {};
}

+ (void)setStatus:(SMAppServiceStatus)status {
    loginItems.status = status;
}

+ (void)obstruct {
    loginItems.isObstructed = true;
}

+ (int)pagesOpened {
    return loginItems.pagesOpened;
}

@end
