#include "BLE_kovra/platform/macos/application/AppKitApplication.h"

#include "BLE_kovra/platform/macos/application/MainMenu.h"
#include "BLE_kovra/platform/macos/loop/ApplicationEnd.h"
#include "BLE_kovra/platform/macos/loop/CalledBack.h"

namespace {

void notify(void (kovra::ApplicationDelegate::*what)()) {
    kovra::ApplicationDelegate* delegate = kovra::ApplicationEnd::delegate();
    if (delegate != nullptr) kovra::calledBack([&] { (delegate->*what)(); });
}

}  // namespace

@interface KovraApplicationDelegate : NSObject <NSApplicationDelegate>
@end

@implementation KovraApplicationDelegate

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    static_cast<void>(notification);
    NSNotificationCenter* center = [[NSWorkspace sharedWorkspace] notificationCenter];
    [center addObserver:self selector:@selector(resume:) name:NSWorkspaceSessionDidBecomeActiveNotification object:nil];
    [center addObserver:self selector:@selector(resume:) name:NSWorkspaceDidWakeNotification object:nil];
    notify(&kovra::ApplicationDelegate::applicationDidFinishLaunching);
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender hasVisibleWindows:(BOOL)hasVisibleWindows {
    static_cast<void>(sender);
    static_cast<void>(hasVisibleWindows);
    [self reopen:nil];
    return NO;
}

// No window is restored. Without this method the system logs a warning at each start.
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)sender {
    static_cast<void>(sender);
    return YES;
}

- (void)applicationWillTerminate:(NSNotification*)notification {
    static_cast<void>(notification);
    kovra::calledBack(kovra::ApplicationEnd::notify);
}

- (void)reopen:(id)sender {
    static_cast<void>(sender);
    notify(&kovra::ApplicationDelegate::applicationDidReopen);
}

- (void)resume:(NSNotification*)notification {
    static_cast<void>(notification);
    notify(&kovra::ApplicationDelegate::applicationDidResume);
}

@end

namespace kovra {

AppKitApplication::AppKitApplication(DispatchMainQueue& queue)
    : queue_(queue), application_([NSApplication sharedApplication]) {}

void AppKitApplication::run(ApplicationDelegate& delegate) {
    ApplicationEnd::expect(delegate, queue_);
    delegate_ = [[KovraApplicationDelegate alloc] init];
    [application_ setDelegate:delegate_];
    [application_ setMainMenu:mainMenu(delegate_, @selector(reopen:))];
    [application_ run];
    ApplicationEnd::notify();
}

void AppKitApplication::setActivationPolicy(ActivationPolicy policy) {
    [application_ setActivationPolicy:static_cast<NSApplicationActivationPolicy>(policy)];
}

void AppKitApplication::activateIgnoringOtherApps() { [application_ activateIgnoringOtherApps:YES]; }

void AppKitApplication::terminate() { [application_ terminate:nil]; }

void AppKitApplication::beep() { NSBeep(); }

void AppKitApplication::reopen() { notify(&ApplicationDelegate::applicationDidReopen); }

void AppKitApplication::sendNextEvent() {
    @autoreleasepool {
        NSEvent* event = [application_ nextEventMatchingMask:NSEventMaskAny
                                                   untilDate:[NSDate distantFuture]
                                                      inMode:NSDefaultRunLoopMode
                                                     dequeue:YES];
        if (event != nil) [application_ sendEvent:event];
    }
}

void AppKitApplication::wake() {
    NSEvent* event = [NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                        location:NSZeroPoint
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:0
                                         context:nil
                                         subtype:0
                                           data1:0
                                           data2:0];
    [application_ postEvent:event atStart:NO];
}

}  // namespace kovra
