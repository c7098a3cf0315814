#include "BLE_kovra/platform/macos/application/AppKitApplication.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>

#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"
#include "tests/platform/macos/gnustep/EachTurn.h"
#include "tests/platform/macos/gnustep/standins/Application.h"

// A window that counts the mouse events that it receives.
@interface KovraTestWindow : NSWindow {
    int _clicks;
}
- (int)clicks;
@end

@implementation KovraTestWindow

- (void)sendEvent:(NSEvent*)event {
    if ([event type] == NSLeftMouseDown) ++_clicks;
}

- (int)clicks {
    return _clicks;
}

@end

namespace kovra {
namespace {

// A delegate that writes what it is told to standard error.
class Delegate : public ApplicationDelegate {
  public:
    void applicationDidFinishLaunching() override {
        std::fputs("launched ", stderr);
        if (whenLaunched) whenLaunched();
    }
    void applicationDidReopen() override { std::fputs("reopened ", stderr); }
    void applicationDidResume() override { std::fputs("resumed ", stderr); }
    void applicationShouldPerform(ApplicationAction) override {}
    ApplicationFacts facts() const override { return {}; }
    void applicationWillTerminate() override { std::fputs("terminates\n", stderr); }

    std::function<void()> whenLaunched;
};

// terminate() ends the process, so ApplicationContract, whose tests go on afterwards, cannot run. Each of these tests
// lets a process end.
class AppKitApplicationDeathTest : public testing::Test {
  protected:
    // Runs the application and does this once it has launched, then terminates it.
    void run(const std::function<void()>& work) {
        auto* delegate = new Delegate;
        delegate->whenLaunched = [this, work] {
            [[KovraEachTurn alloc] initWithTurn:[this, work] {
                work();
                application_.terminate();
            }];
        };
        application_.run(*delegate);
    }
    static void post(NSString* name) {
        [[[NSWorkspace sharedWorkspace] notificationCenter] postNotificationName:name object:nil];
    }

    DispatchMainQueue queue_;
    AppKitApplication application_{queue_};
};

TEST_F(AppKitApplicationDeathTest, NotifiesOfItsLaunchAndEnd) {
    EXPECT_EXIT(run([] {}), testing::ExitedWithCode(0), "launched terminates\n");
}

TEST_F(AppKitApplicationDeathTest, MayEndWhileItLaunches) {
    EXPECT_EXIT(
        {
            auto* delegate = new Delegate;
            delegate->whenLaunched = [this] { application_.terminate(); };
            application_.run(*delegate);
        },
        testing::ExitedWithCode(0), "launched terminates\n$");
}

TEST_F(AppKitApplicationDeathTest, NotifiesOfAWakeUpAndOfTheActiveSession) {
    EXPECT_EXIT(run([] {
                    post(NSWorkspaceDidWakeNotification);
                    std::fputs("then ", stderr);
                    post(NSWorkspaceSessionDidBecomeActiveNotification);
                }),
                testing::ExitedWithCode(0), "launched resumed then resumed terminates\n");
}

TEST_F(AppKitApplicationDeathTest, NotifiesOfNothingElseThatTheWorkspaceReports) {
    EXPECT_EXIT(run([] {
                    post(NSWorkspaceWillSleepNotification);
                    post(NSWorkspaceSessionDidResignActiveNotification);
                    post(NSWorkspaceDidLaunchApplicationNotification);
                }),
                testing::ExitedWithCode(0), "launched terminates\n");
}

TEST_F(AppKitApplicationDeathTest, NotifiesOfASecondStart) {
    EXPECT_EXIT(run([this] {
                    id delegate = [NSApp delegate];
                    const BOOL isHandled = [delegate applicationShouldHandleReopen:NSApp hasVisibleWindows:NO];
                    std::fputs(isHandled ? "by AppKit " : "", stderr);
                    application_.reopen();
                }),
                testing::ExitedWithCode(0), "launched reopened reopened terminates\n");
}

TEST_F(AppKitApplicationDeathTest, OpensTheSettingsByTheMainMenu) {
    EXPECT_EXIT(run([] {
                    NSMenu* first = [[[[NSApp mainMenu] itemArray] objectAtIndex:0] submenu];
                    [first performActionForItemAtIndex:0];
                }),
                testing::ExitedWithCode(0), "launched reopened terminates\n");
}

TEST_F(AppKitApplicationDeathTest, AnswersThatItsRestorableStateIsSecure) {
    EXPECT_EXIT(run([] {
                    id delegate = [NSApp delegate];
                    std::fputs([delegate applicationSupportsSecureRestorableState:NSApp] ? "secure " : "", stderr);
                }),
                testing::ExitedWithCode(0), "launched secure terminates\n");
}

class AppKitApplicationTest : public testing::Test {
  protected:
    static NSEvent* clickIn(NSWindow* window) {
        return [NSEvent mouseEventWithType:NSLeftMouseDown
                                  location:NSMakePoint(1, 1)
                             modifierFlags:0
                                 timestamp:0
                              windowNumber:[window windowNumber]
                                   context:nil
                               eventNumber:0
                                clickCount:1
                                  pressure:1];
    }

    DispatchMainQueue queue_;
    AppKitApplication application_{queue_};
};

TEST_F(AppKitApplicationTest, SetsThePolicyOfTheSystem) {
    application_.setActivationPolicy(ActivationPolicy::accessory);
    EXPECT_EQ([NSApp activationPolicyStandIn], NSApplicationActivationPolicyAccessory);
}

TEST_F(AppKitApplicationTest, WaitsForTheNextEventAndSendsIt) {
    KovraTestWindow* window = [[KovraTestWindow alloc] initWithContentRect:NSMakeRect(0, 0, 100, 100)
                                                                 styleMask:NSBorderlessWindowMask
                                                                   backing:NSBackingStoreBuffered
                                                                     defer:NO];
    int turns = 0;
    KovraEachTurn* later = [[KovraEachTurn alloc] initWithTurn:[window, &turns] {
        if (++turns == 5) [NSApp postEvent:clickIn(window) atStart:NO];
    }];
    int events = 0;
    for (;[window clicks] == 0; ++events) application_.sendNextEvent();
    [later stop];
    EXPECT_GE(turns, 5);
    EXPECT_LE(events, 4) << "some of which the window server sends";
}

TEST_F(AppKitApplicationTest, ReturnsFromItsWaitWhenItIsWoken) {
    int turns = 0;
    KovraEachTurn* later = [[KovraEachTurn alloc] initWithTurn:[this, &turns] {
        if (++turns == 5) application_.wake();
    }];
    while (turns < 5) application_.sendNextEvent();
    [later stop];
    EXPECT_LT(turns, 500) << "it waits for another event";
}

}  // namespace
}  // namespace kovra
