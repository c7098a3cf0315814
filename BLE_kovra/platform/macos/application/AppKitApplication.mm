#include "BLE_kovra/platform/macos/application/AppKitApplication.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <utility>

#include "BLE_kovra/platform/macos/application/MainMenu.h"
#include "BLE_kovra/platform/macos/loop/CalledBack.h"
#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"

namespace {

// The delegate from the start of run() until it is notified of the end. Null before and afterwards.
kovra::ApplicationDelegate* running = nullptr;
kovra::DispatchMainQueue* mainQueue = nullptr;
std::terminate_handler previousTerminateHandler = nullptr;

void notify(void (kovra::ApplicationDelegate::*what)()) {
    if (running != nullptr) kovra::calledBack([&] { (running->*what)(); });
}

void notifyOfEnd() {
    kovra::ApplicationDelegate* delegate = std::exchange(running, nullptr);
    if (delegate == nullptr) return;
    mainQueue->stop();
    delegate->applicationWillTerminate();
}

[[noreturn]] void notifyOfEndAndAbort() {
    if (![NSThread isMainThread]) {
        // This is a thread of the system, but the delegate expects the main thread. So give the main thread a second to
        // end the program. After that, call the delegate here, because the trackpad must be unmuted.
        constexpr unsigned timeout = 1;  // seconds
        mainQueue->async([] { notifyOfEndAndAbort(); });
        sleep(timeout);
    }
    notifyOfEnd();
    if (previousTerminateHandler != nullptr) previousTerminateHandler();
    std::abort();
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

- (void)applicationWillTerminate:(NSNotification*)notification {
    static_cast<void>(notification);
    kovra::calledBack(notifyOfEnd);
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
    running = &delegate;
    mainQueue = &queue_;
    previousTerminateHandler = std::set_terminate(notifyOfEndAndAbort);
    static_cast<void>(std::atexit(notifyOfEnd));  // AppKit calls exit() when it loses the window server
    delegate_ = [[KovraApplicationDelegate alloc] init];
    [application_ setDelegate:delegate_];
    [application_ setMainMenu:mainMenu(delegate_, @selector(reopen:))];
    [application_ run];
    notifyOfEnd();
}

void AppKitApplication::setActivationPolicy(ActivationPolicy policy) {
    [application_ setActivationPolicy:static_cast<NSApplicationActivationPolicy>(policy)];
}

void AppKitApplication::activateIgnoringOtherApps() { [application_ activateIgnoringOtherApps:YES]; }

void AppKitApplication::terminate() { [application_ terminate:nil]; }

void AppKitApplication::beep() { NSBeep(); }

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
