#include "BLE_kovra/platform/linux/windows/ProcessWindowHost.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/session/ActivationToken.h"
#include "tests/fakes/FakeDesktop.h"
#include "tests/platform/linux/windows/StandInWindow.h"
#include "tests/support/Environment.h"
#include "tests/support/ViewDump.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Path = std::vector<std::string>;

// A window with switches, a picker and a link, shown by a fake window process.
class ProcessWindowHostTest : public testing::Test {
  protected:
    ProcessWindowHostTest() { window->setTitle("A title"); }

    View content(const std::vector<std::string>& devices = {"a", "b"}) {
        Picker picker;
        picker.options = {{"One", "one"}, {"Two", "two"}};
        picker.selection = selection;
        picker.select = [this](const std::string& tag) { done.push_back("select " + tag); };
        View list{Stack{}, {}, {}, {}};
        for (const std::string& device : devices) list.children.push_back(toggle(device).identified(device));
        std::vector<View> children{toggle("block"), {picker, {}, {}, {}}, std::move(list)};
        children.push_back({Link{"mail", "mailto:somebody"}, {}, {}, {}});
        return {Stack{}, std::move(children), {}, {}};
    }
    View toggle(const std::string& name) {
        const auto set = [this, name](bool isOn) {
            done.push_back(name + (isOn ? " on" : " off"));
            if (onSet) onSet();
        };
        return {Toggle{false, set}, {{Text{name}, {}, {}, {}}}, {}, {}};
    }
    void open() {
        window->makeKeyAndOrderFront();
        standIn.turnUntil([&] { return standIn.showsWindow(); });
    }
    // Sends a change by the user, waits for the reply, and returns the content that is shown then.
    std::string change(std::uint64_t number, const Path& path, const std::variant<bool, std::string>& value) {
        standIn.send(ControlChanged{number, path, value});
        standIn.turnUntil([&] { return standIn.newest<ShowWindow>()->acknowledged == number; });
        return shown();
    }
    std::string shown() const { return ViewDump::of(standIn.newest<ShowWindow>()->content); }

    SdEventLoop loop;
    StandInWindow standIn{loop};
    ActivationToken token;
    FakeWorkspace workspace;
    ProcessWindowHost host{loop, standIn.process(), token, workspace};
    std::string selection = "one";
    std::function<void()> onSet;
    std::vector<std::string> done;
    std::unique_ptr<Window> window = host.makeWindow(content());
};

TEST_F(ProcessWindowHostTest, StartsNothingBeforeTheWindowIsShown) {
    window->setContent(content());
    standIn.let(20ms);
    EXPECT_FALSE(standIn.isRunning());
    EXPECT_FALSE(window->isVisible());
}

TEST_F(ProcessWindowHostTest, SendsThePropertiesOfTheWindow) {
    window->setStyleMask(WindowStyle::titled | WindowStyle::closable);
    window->setContentSize({440, 480});
    open();
    const auto sent = standIn.newest<ShowWindow>();
    EXPECT_EQ(sent->title, "A title");
    EXPECT_EQ(sent->styleMask, 3U);
    EXPECT_EQ(sent->contentSize, (Size{440, 480}));
    EXPECT_EQ(sent->place, WindowPlace());
    EXPECT_EQ(sent->acknowledged, 0U);
    EXPECT_EQ(shown(), ViewDump::of(content()));
}

TEST_F(ProcessWindowHostTest, SendsOncePerTurnAndOnlyChanges) {
    open();
    for (int i = 0; i < 100; ++i) window->setContent(content({"x" + std::to_string(i)}));
    standIn.turnUntil([&] { return standIn.received<ShowWindow>().size() == 2; });
    EXPECT_EQ(shown(), ViewDump::of(content({"x99"})));
    for (int i = 0; i < 10; ++i) {
        window->setContent(content({"x99"}));
        standIn.let(1ms);
    }
    window->setContent(content({"last"}));
    standIn.turnUntil([&] { return shown() == ViewDump::of(content({"last"})); });
    EXPECT_EQ(standIn.received<ShowWindow>().size(), 3U);
}

TEST_F(ProcessWindowHostTest, ComesToTheFrontAtEachRequest) {
    open();
    const auto first = standIn.newest<ShowWindow>()->front;
    window->makeKeyAndOrderFront();
    standIn.turnUntil([&] { return standIn.newest<ShowWindow>()->front != first; });
}

TEST_F(ProcessWindowHostTest, PassesTheTokenOnlyOnce) {
    token.provide("a token");
    open();
    EXPECT_EQ(standIn.newest<ShowWindow>()->activationToken, "a token");
    const auto first = standIn.newest<ShowWindow>()->front;
    window->makeKeyAndOrderFront();
    standIn.turnUntil([&] { return standIn.newest<ShowWindow>()->front != first; });
    EXPECT_EQ(standIn.newest<ShowWindow>()->activationToken, "");
}

TEST_F(ProcessWindowHostTest, AppliesTheUsersChangeToTheControlAtThePath) {
    open();
    change(1, {"0"}, true);
    change(2, {"1"}, std::string("two"));
    change(3, {"2", "b"}, false);
    EXPECT_EQ(done, (Path{"block on", "select two", "b off"}));
}

TEST_F(ProcessWindowHostTest, FindsADeviceAfterItMovedInTheList) {
    open();
    window->setContent(content({"c", "b", "a"}));
    change(1, {"2", "b"}, true);
    window->setContent(content({"b"}));
    change(2, {"2", "b"}, false);
    EXPECT_EQ(done, (Path{"b on", "b off"}));
}

TEST_F(ProcessWindowHostTest, AcknowledgesButIgnoresImpossibleChanges) {
    open();
    std::uint64_t number = 0;
    for (const Path& path :
         {Path{}, Path{"7"}, Path{"2"}, Path{"2", "c"}, Path{"2", "0"}, Path{"2", ""}, Path{"0", "0", "0"}, Path{"-1"},
          Path{"18446744073709551616"}, Path{"3"}, Path{"0 "}, Path{"00"}}) {
        change(++number, path, true);
        change(++number, path, std::string("one"));
    }
    change(++number, {"0"}, std::string("true"));
    change(++number, {"1"}, true);
    change(++number, {"1"}, std::string("three"));
    EXPECT_EQ(done, Path{});
}

TEST_F(ProcessWindowHostTest, AcknowledgesAChangeTogetherWithItsResult) {
    open();
    onSet = [&] {
        window->setContent(content({"queued at once"}));
        loop.async([&] { window->setContent(content({"what came of it"})); });
    };
    EXPECT_EQ(change(1, {"0"}, true), ViewDump::of(content({"what came of it"})));
    for (const ShowWindow& each : standIn.received<ShowWindow>()) {
        if (each.acknowledged != 0) {
            EXPECT_EQ(ViewDump::of(each.content), ViewDump::of(content({"what came of it"})));
        }
    }
}

TEST_F(ProcessWindowHostTest, AcknowledgesAChangeThatHadNoEffect) {
    open();
    for (std::uint64_t number = 1; number < 5; ++number) {
        EXPECT_EQ(change(number, {"0"}, true), ViewDump::of(content()));
    }
}

TEST_F(ProcessWindowHostTest, OpensALinkWithTheDestinationInTheView) {
    open();
    for (const Path& path : {Path{"3"}, Path{"0"}, Path{"4"}, Path{}, Path{"3", "0"}}) standIn.send(LinkFollowed{path});
    change(1, {"0"}, true);
    EXPECT_EQ(workspace.opened, Path{"mailto:somebody"});
}

TEST_F(ProcessWindowHostTest, IsHiddenWhenTheUserClosesItAndUnchangedWhenItIsShownAgain) {
    open();
    const WindowPlace place{.position = Point{120, 30}, .isMinimised = false, .scroll = 47.5};
    standIn.send(WindowClosed{standIn.newest<ShowWindow>()->front, place});
    standIn.turnUntil([&] { return !window->isVisible(); });
    standIn.turnUntil([&] { return !standIn.isRunning(); });  // after the linger time
    window->setContent(content({"new"}));
    open();
    EXPECT_EQ(standIn.starts(), 2U);
    EXPECT_EQ(standIn.newest<ShowWindow>()->place, place);
    EXPECT_EQ(shown(), ViewDump::of(content({"new"})));
}

TEST_F(ProcessWindowHostTest, IsShownAgainByTheSameProcessIfThatStillRuns) {
    open();
    standIn.send(WindowClosed{standIn.newest<ShowWindow>()->front, {}});
    standIn.turnUntil([&] { return !window->isVisible() && !standIn.showsWindow(); });
    open();
    EXPECT_EQ(standIn.starts(), 1U);
}

TEST_F(ProcessWindowHostTest, StaysOpenIfItIsBroughtToTheFrontWhileTheUserClosesIt) {
    open();
    const auto first = standIn.newest<ShowWindow>()->front;
    window->makeKeyAndOrderFront();
    standIn.send(WindowClosed{first, {}});
    change(1, {"0"}, true);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(ProcessWindowHostTest, KeepsItsPositionInANewProcess) {
    open();
    const WindowPlace place{.position = Point{-5, 1'000}, .isMinimised = true, .scroll = 12};
    standIn.send(WindowPlaced{place});
    change(1, {"0"}, true);
    EXPECT_EQ(standIn.newest<ShowWindow>()->place, place);
    standIn.kill();
    standIn.turnUntil([&] { return !window->isVisible(); });
    open();
    WindowPlace unminimised = place;
    unminimised.isMinimised = false;
    EXPECT_EQ(standIn.newest<ShowWindow>()->place, unminimised);
    window->center();
    window->setTitle("Centred");
    standIn.turnUntil([&] { return !standIn.newest<ShowWindow>()->place.position; });
}

TEST_F(ProcessWindowHostTest, CountsAsClosedWhenTheProcessDiesAndIsNotShownByTheNext) {
    standIn.process().show(ShowTray());
    open();
    standIn.kill();
    standIn.turnUntil([&] { return !window->isVisible() && standIn.starts() == 2; });
    standIn.turnUntil([&] { return standIn.newest<ShowTray>().has_value(); });
    standIn.let(20ms);
    EXPECT_FALSE(standIn.showsWindow());
    open();
    EXPECT_EQ(standIn.starts(), 2U);
}

TEST_F(ProcessWindowHostTest, AcceptsChangesFromTheNextProcessFromTheFirstOneOn) {
    open();
    change(5, {"0"}, true);
    standIn.kill();
    standIn.turnUntil([&] { return !window->isVisible(); });
    open();
    EXPECT_EQ(standIn.newest<ShowWindow>()->acknowledged, 0U);
    change(1, {"0"}, false);
    EXPECT_EQ(done, (Path{"block on", "block off"}));
}

TEST_F(ProcessWindowHostTest, CountsAsClosedIfTheProgramIsMissing) {
    standIn.remove();
    for (int i = 0; i < 3; ++i) {
        window->makeKeyAndOrderFront();
        EXPECT_TRUE(window->isVisible());
        standIn.turnUntil([&] { return !window->isVisible(); });
    }
}

TEST_F(ProcessWindowHostTest, CountsAsClosedWithoutADisplay) {
    Environment environment;
    environment.unset({"WAYLAND_DISPLAY", "DISPLAY"});
    WindowProcess process(loop, windowProgram);
    ProcessWindowHost unseen(loop, process, token, workspace);
    const auto closed = unseen.makeWindow(content());
    closed->makeKeyAndOrderFront();
    standIn.turnUntil([&] { return !closed->isVisible(); });
}

TEST_F(ProcessWindowHostTest, IsHiddenWhenItIsDestroyed) {
    open();
    window.reset();
    standIn.turnUntil([&] { return !standIn.showsWindow(); });
    standIn.send(ControlChanged{1, {"0"}, true});
    standIn.let(20ms);
    EXPECT_EQ(done, Path{});
    window = host.makeWindow(content());
    open();
}

}  // namespace
}  // namespace kovra
