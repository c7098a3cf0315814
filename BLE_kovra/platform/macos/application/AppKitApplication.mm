#include "BLE_kovra/platform/macos/application/AppKitApplication.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <utility>

#include "BLE_kovra/platform/macos/loop/CalledBack.h"
#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"
#include "BLE_kovra/platform/macos/application/MainMenu.h"

namespace {

// Until it has been told of the end.
kovra::ApplicationDelegate* running = nullptr;
kovra::DispatchMainQueue* mainQueue = nullptr;
std::terminate_handler lastWords = nullptr;

void tell(void (kovra::ApplicationDelegate::*what)()) {
    if (running != nullptr) kovra::calledBack([&] { (running->*what)(); });
}

void tellOfTheEnd() {
    kovra::ApplicationDelegate* delegate = std::exchange(running, nullptr);
    if (delegate == nullptr) return;
    mainQueue->stop();
    delegate->applicationWillTerminate();
}

[[noreturn]] void tellOfTheEndAndAbort() {
    if (![NSThread isMainThread]) {
        // A thread of the system's. The delegate belongs to the main thread, which is asked first; it may hang.
        constexpr unsigned patience = 1;  // seconds
        mainQueue->async([] { tellOfTheEndAndAbort(); });
        sleep(patience);
    }
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
    tell(&kovra::ApplicationDelegate::applicationDidFinishLaunching);
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender hasVisibleWindows:(BOOL)hasVisibleWindows {
    static_cast<void>(sender);
    static_cast<void>(hasVisibleWindows);
    [self reopen:nil];
    return NO;
}

- (void)applicationWillTerminate:(NSNotification*)notification {
    static_cast<void>(notification);
    kovra::calledBack(tellOfTheEnd);
}

- (void)reopen:(id)sender {
    static_cast<void>(sender);
    tell(&kovra::ApplicationDelegate::applicationDidReopen);
}

- (void)resume:(NSNotification*)notification {
    static_cast<void>(notification);
    tell(&kovra::ApplicationDelegate::applicationDidResume);
}

@end

namespace kovra {

AppKitApplication::AppKitApplication(DispatchMainQueue& queue)
    : queue_(queue), application_([NSApplication sharedApplication]) {}

void AppKitApplication::run(ApplicationDelegate& delegate) {
    running = &delegate;
    mainQueue = &queue_;
    lastWords = std::set_terminate(tellOfTheEndAndAbort);
    static_cast<void>(std::atexit(tellOfTheEnd));  // AppKit ends the process by itself where it loses the screen
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
