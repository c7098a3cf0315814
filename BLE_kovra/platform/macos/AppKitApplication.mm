#include "BLE_kovra/platform/macos/AppKitApplication.h"

#include <cstdlib>
#include <exception>
#include <utility>

#include "BLE_kovra/platform/macos/DispatchMainQueue.h"
#include "BLE_kovra/platform/macos/MainMenu.h"

namespace {

// Until it has been told of the end.
kovra::ApplicationDelegate* running = nullptr;
kovra::DispatchMainQueue* mainQueue = nullptr;
std::terminate_handler lastWords = nullptr;

void tellOfTheEnd() {
    kovra::ApplicationDelegate* delegate = std::exchange(running, nullptr);
    if (delegate == nullptr) return;
    mainQueue->stop();
    delegate->applicationWillTerminate();
}

[[noreturn]] void tellOfTheEndAndAbort() {
    tellOfTheEnd();
    if (lastWords != nullptr) lastWords();
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
    if (running != nullptr) running->applicationDidFinishLaunching();
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender hasVisibleWindows:(BOOL)hasVisibleWindows {
    static_cast<void>(sender);
    static_cast<void>(hasVisibleWindows);
    [self reopen:nil];
    return NO;
}

- (void)applicationWillTerminate:(NSNotification*)notification {
    static_cast<void>(notification);
    tellOfTheEnd();
}

- (void)reopen:(id)sender {
    static_cast<void>(sender);
    if (running != nullptr) running->applicationDidReopen();
}

- (void)resume:(NSNotification*)notification {
    static_cast<void>(notification);
    if (running != nullptr) running->applicationDidResume();
}

@end

namespace kovra {

AppKitApplication::AppKitApplication(DispatchMainQueue& queue)
    : queue_(queue), application_([NSApplication sharedApplication]) {}

void AppKitApplication::run(ApplicationDelegate& delegate) {
    running = &delegate;
    mainQueue = &queue_;
    lastWords = std::set_terminate(tellOfTheEndAndAbort);
    delegate_ = [[KovraApplicationDelegate alloc] init];
    [application_ setDelegate:delegate_];
    [application_ setMainMenu:mainMenu(delegate_, @selector(reopen:))];
    [application_ run];
    tellOfTheEnd();
}

void AppKitApplication::setActivationPolicy(ActivationPolicy policy) {
    [application_ setActivationPolicy:static_cast<NSApplicationActivationPolicy>(policy)];
}

void AppKitApplication::activateIgnoringOtherApps() { [application_ activateIgnoringOtherApps:YES]; }

void AppKitApplication::terminate() { [application_ terminate:nil]; }

void AppKitApplication::beep() { NSBeep(); }

}  // namespace kovra
