#include "BLE_kovra/platform/linux/start/UserStart.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "BLE_kovra/platform/linux/session/ActivationToken.h"
#include "BLE_kovra/platform/linux/start/LaunchFeedback.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/platform/linux/start/StandInCompositor.h"
#include "tests/platform/linux/tray/Panel.h"
#include "tests/platform/linux/windows/StandInWindow.h"
#include "tests/support/linux/PrivateBus.h"
#include "tests/support/linux/RootListener.h"
#include "tests/support/linux/VirtualScreen.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

// A session with a bus, a status item, and a stand-in for the window process. Its launch ends when the
// test calls launch(). The test starts a panel.
class UserStartTest : public testing::Test {
  protected:
    static constexpr const char* token = "desktop_TIME1";

    // The application opens the settings window, as its delegate does.
    struct Delegate : ApplicationDelegate {
        explicit Delegate(UserStartTest& test) : rig(test) {}
        void applicationDidFinishLaunching() override {
            turnUntil(rig.loop, [this] { return rig.launchMayEnd; });
            rig.loop.async([this] { rig.meanwhile(); });
        }
        void applicationDidReopen() override {
            ++openings;
            rig.openWindow();
        }
        void applicationDidResume() override {}
        void applicationShouldPerform(ApplicationAction) override {}
        ApplicationFacts facts() const override {
            return {.chosen = {rig.isChosen ? 1U : 0U, ApplicationFacts::ChosenDevice()}};
        }
        void applicationWillTerminate() override {}

        UserStartTest& rig;
        int openings = 0;
    };

    UserStartTest() {
        activation.provide(token);
        turnUntil(loop, [&] { return bus.connection() != nullptr; });
        watcher.setItem("/StatusNotifierItem");
    }

    ~UserStartTest() override { daemon.end(); }  // the window's stand-in waits for all child processes

    void startOn(XConnection* x) { startOn(x, token); }
    void startOn(XConnection* x, const std::string& with) {
        start.emplace(UserStart::Desk{loop, application, x, watcher, window.process(), activation}, with);
    }
    // Launches the application, and runs it until `work` has returned.
    void run(const std::function<void()>& work) {
        meanwhile = [this, work] {
            work();
            loop.stop();
        };
        application.run(delegate);
    }
    void openWindow() {
        ShowWindow shown;
        shown.front = static_cast<std::uint64_t>(delegate.openings);
        shown.activationToken = activation.take();
        window.process().show(shown);
    }
    void showAlert(const std::string& activationToken) {
        ShowAlerts shown;
        shown.alerts.push_back({1, activationToken, {"Driver", "", {"OK"}}});
        window.process().show(shown);
    }
    // Replies as a window process does that has shown everything.
    void replyFromWindow() {
        window.turnUntil([&] { return window.newest<Ping>().has_value(); });
        window.send(Pong{window.newest<Ping>()->number});
    }
    // Lets half a second pass, in which nothing is expected to happen.
    void letTimePass() { window.let(500ms); }

    PrivateBus daemon{"DBUS_SESSION_BUS_ADDRESS"};
    SdEventLoop loop;
    SessionBus bus{loop};
    StatusNotifierWatcher watcher{bus};
    StandInWindow window{loop};
    SdEventApplication application{loop};
    Delegate delegate{*this};
    ActivationToken activation;
    std::optional<UserStart> start;
    bool isChosen = true;
    bool launchMayEnd = true;
    std::function<void()> meanwhile;
};

// Feedback that has not been ended by then ends because its time is over.
constexpr auto soon = LaunchFeedback::longest / 2;

class UserStartOnXTest : public UserStartTest {
  protected:
    ~UserStartOnXTest() override { start.reset(); }

    Texts received() {
        lookUntil(loop, [&] { return !listener.messages().empty(); }, soon);
        return listener.messages();
    }
    Texts receivedSoFar() { return listener.messages(); }

    const VirtualScreen screen;
    RootListener listener;
    std::unique_ptr<XConnection> x = XConnection::open(loop);
};

const Texts ended{"remove: ID=desktop_TIME1"};

TEST_F(UserStartOnXTest, EndsTheFeedbackWhenATrayHasTheIcon) {
    const Panel panel(loop);
    startOn(x.get());
    run([&] {
        EXPECT_EQ(received(), ended);
        EXPECT_EQ(delegate.openings, 0);
    });
}

TEST_F(UserStartOnXTest, EndsTheFeedbackWhenATrayHasTheIconAlthoughTheLaunchGoesOn) {
    const Panel panel(loop);
    launchMayEnd = false;
    startOn(x.get());
    loop.async([&] {
        EXPECT_EQ(received(), ended);
        launchMayEnd = true;
    });
    run([] {});
}

TEST_F(UserStartOnXTest, KeepsTheFeedbackUntilThePanelHasAcceptedTheIcon) {
    const Panel panel(loop, Panel::Hosts::none);
    startOn(x.get());
    run([&] {
        letTimePass();
        EXPECT_EQ(receivedSoFar(), Texts{});
    });
}

TEST_F(UserStartOnXTest, EndsTheFeedbackWhenAWindowIsShown) {
    startOn(x.get());
    run([&] {
        openWindow();
        letTimePass();
        EXPECT_EQ(receivedSoFar(), Texts{});
        replyFromWindow();
        EXPECT_EQ(received(), ended);
    });
}

TEST_F(UserStartOnXTest, EndsTheFeedbackWhenTheAlertOfTheLaunchIsShown) {
    launchMayEnd = false;
    startOn(x.get());
    loop.async([&] {
        showAlert("");
        replyFromWindow();
        EXPECT_EQ(received(), ended);
        launchMayEnd = true;
    });
    run([] {});
}

TEST_F(UserStartOnXTest, OpensTheSettingsAtOnceIfNothingIsChosenAndThereIsNoTray) {
    isChosen = false;
    startOn(x.get());
    run([&] {
        EXPECT_TRUE(turnUntil(loop, [&] { return delegate.openings == 1; }, 2s));
        replyFromWindow();
        EXPECT_EQ(received(), ended);
        letTimePass();
        EXPECT_EQ(delegate.openings, 1);
    });
}

TEST_F(UserStartOnXTest, OpensNothingAtOnceIfADeviceIsChosen) {
    startOn(x.get());
    run([&] {
        letTimePass();
        EXPECT_EQ(watcher.icon(), StatusNotifierWatcher::Icon::notShown);
        EXPECT_EQ(delegate.openings, 0);
    });
}

TEST_F(UserStartOnXTest, OpensNothingIfThereIsATrayThatEmbedsWindows) {
    isChosen = false;
    listener.becomeTray();
    startOn(x.get());
    run([&] {
        letTimePass();
        EXPECT_EQ(watcher.icon(), StatusNotifierWatcher::Icon::notShown);
        EXPECT_EQ(delegate.openings, 0);
    });
}

TEST_F(UserStartOnXTest, EndsTheFeedbackOfALaterStartWhenTheWindowIsShown) {
    const Panel panel(loop);
    startOn(x.get(), "");
    run([&] {
        activation.provide("later_TIME2");
        application.reopen();
        start->startedAgain("later_TIME2");
        replyFromWindow();
        EXPECT_EQ(received(), Texts{"remove: ID=later_TIME2"});
    });
}

TEST_F(UserStartOnXTest, EndsTheFeedbackOfAnActionWithoutAWindowAtOnce) {
    startOn(x.get(), "");
    run([&] {
        start->endFeedback("");
        start->endFeedback(std::string(ActivationToken::longest + 1, 'x'));
        start->endFeedback("action_TIME3");
        EXPECT_EQ(received(), Texts{"remove: ID=action_TIME3"});
    });
}

TEST_F(UserStartOnXTest, EndsTheFeedbackOfAClickOnTheIcon) {
    startOn(x.get(), "");
    run([&] {
        activation.provideForClick("click_TIME4");
        EXPECT_EQ(received(), Texts{"remove: ID=click_TIME4"});
        EXPECT_EQ(activation.take(), "");
    });
}

TEST_F(UserStartOnXTest, EndsTheFeedbackOfEachClick) {
    startOn(x.get(), "");
    run([&] {
        activation.provideForClick("one_TIME5");
        activation.provideForClick("two_TIME6");
        EXPECT_EQ(activation.take(), "two_TIME6");
        lookUntil(loop, [&] { return listener.messages().size() == 2; }, soon);
        EXPECT_EQ(receivedSoFar(), (Texts{"remove: ID=one_TIME5", "remove: ID=two_TIME6"}));
    });
}

TEST_F(UserStartOnXTest, EndsTheFeedbackOfAClickThatEndsTheProgram) {
    startOn(x.get(), "");
    run([&] {
        letTimePass();
        activation.provideForClick("quit_TIME7");
    });
    EXPECT_EQ(receivedSoFar(), Texts{});
    start.reset();
    EXPECT_EQ(receivedSoFar(), Texts{"remove: ID=quit_TIME7"});
}

TEST_F(UserStartOnXTest, LetsClicksHappenWhenItIsGone) {
    startOn(x.get(), "");
    start.reset();
    activation.provideForClick("click_TIME4");
    EXPECT_EQ(activation.take(), "click_TIME4");
}

TEST_F(UserStartOnXTest, DoesNothingForAStartAtLogin) {
    isChosen = false;
    startOn(x.get(), "");
    run([&] {
        letTimePass();
        openWindow();
        replyFromWindow();
        letTimePass();
        EXPECT_EQ(receivedSoFar(), Texts{});
        EXPECT_EQ(delegate.openings, 0);
    });
}

class UserStartOnWaylandTest : public UserStartTest {
  protected:
    StandInCompositor compositor{loop};
};

TEST_F(UserStartOnWaylandTest, EndsTheFeedbackWhenATrayHasTheIcon) {
    const Panel panel(loop);
    startOn(nullptr);
    run([&] {
        EXPECT_TRUE(turnUntil(loop, [&] { return compositor.isClientGone; }, soon));
        EXPECT_EQ(compositor.requests.at(2), "set_startup_id desktop_TIME1");
        EXPECT_EQ(activation.take(), "");
    });
}

TEST_F(UserStartOnWaylandTest, LeavesTheFeedbackToTheWindowThatUsesTheToken) {
    isChosen = false;
    startOn(nullptr);
    run([&] {
        EXPECT_TRUE(turnUntil(loop, [&] { return delegate.openings == 1; }, 2s));
        replyFromWindow();
        EXPECT_EQ(window.newest<ShowWindow>()->activationToken, token);
        window.let(5s);
        EXPECT_EQ(compositor.clients, 0);
    });
}

TEST_F(UserStartOnWaylandTest, EndsTheFeedbackOfAClickThatOpensNoWindow) {
    startOn(nullptr, "");
    run([&] {
        activation.provideForClick("click_TIME4");
        EXPECT_TRUE(turnUntil(loop, [&] { return compositor.isClientGone; }, soon));
        EXPECT_EQ(compositor.requests.at(2), "set_startup_id click_TIME4");
    });
}

TEST_F(UserStartOnWaylandTest, EndsTheFeedbackOfAClickThatEndsTheProgram) {
    SdEventLoop desktop;
    StandInCompositor running(desktop);
    startOn(nullptr, "");
    run([&] { activation.provideForClick("quit_TIME7"); });
    std::thread program([&] { start.reset(); });
    EXPECT_TRUE(turnUntil(desktop, [&] { return running.isClientGone; }));
    program.join();
    EXPECT_EQ(running.requests.at(2), "set_startup_id quit_TIME7");
}

TEST_F(UserStartOnWaylandTest, LeavesTheFeedbackOfAClickToTheWindowThatItOpens) {
    startOn(nullptr, "");
    run([&] {
        activation.provideForClick("click_TIME4");
        openWindow();
        replyFromWindow();
        EXPECT_EQ(window.newest<ShowWindow>()->activationToken, "click_TIME4");
        window.let(1s);
        EXPECT_EQ(compositor.clients, 0);
    });
}

TEST_F(UserStartOnWaylandTest, KeepsTheTokenForTheAlertOfTheLaunch) {
    const Panel panel(loop);
    launchMayEnd = false;
    startOn(nullptr);
    loop.async([&] {
        EXPECT_TRUE(turnUntil(loop, [&] { return watcher.icon() == StatusNotifierWatcher::Icon::shown; }));
        letTimePass();
        EXPECT_EQ(compositor.clients, 0);
        showAlert(activation.take());
        launchMayEnd = true;
    });
    run([&] {
        letTimePass();
        EXPECT_EQ(compositor.clients, 0);
        EXPECT_EQ(window.newest<ShowAlerts>()->alerts.at(0).activationToken, token);
    });
}

TEST_F(UserStartOnWaylandTest, EndsTheFeedbackAfterFiveSecondsIfTheWindowIsGone) {
    startOn(nullptr);
    run([&] {
        openWindow();
        window.process().hideWindow();
        EXPECT_TRUE(turnUntil(loop, [&] { return compositor.isClientGone; }));
        EXPECT_EQ(compositor.requests.at(2), "set_startup_id desktop_TIME1");
    });
}

}  // namespace
}  // namespace kovra
