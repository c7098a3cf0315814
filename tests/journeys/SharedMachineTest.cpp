// Tests of the whole application on fakes, while another user's session is active.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/journeys/Mouse.h"
#include "tests/support/AppRig.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

// Simulates the helper, which lets only the user of the active session write the flag. When a user's session is active
// again, the helper soon replaces the flag by a file with that user's last text.
class SharedMachineTest : public testing::Test {
  protected:
    void startMuted() {
        computer.choose({mouse});
        rig.emplace(computer).launch();
        plugged = computer.hid.attach(mouse);
        computer.queue.run();
        EXPECT_EQ(computer.flag(), "on");
    }
    void leave() {
        left = computer.flag();
        computer.files.contents[HelperController::stateFile] = "off";  // the other user's flag
        computer.files.failAlways("Permission denied");
    }
    void comeBack() {
        rig->application.resume();  // before the helper has replaced the flag
        computer.queue.run();
        computer.files.contents[HelperController::stateFile] = left;
        computer.files.failAlways(std::nullopt);
        rig->application.resume();
        computer.queue.run();
    }

    Computer computer;
    std::optional<AppRig> rig;
    FakeHID::Plugged plugged;
    std::string left;
};

TEST_F(SharedMachineTest, AMouseRemovedDuringAnotherUsersSessionUnmutesOnReturn) {
    startMuted();
    leave();
    computer.hid.detach(plugged);
    computer.queue.advance(10s);
    EXPECT_EQ(computer.flag(), "off");  // the other user's flag
    comeBack();
    EXPECT_EQ(computer.flag(), "off");
    EXPECT_EQ(computer.files.writes.back().text, "off");
    EXPECT_TRUE(computer.files.writes.back().succeeded);
    EXPECT_FALSE(computer.statusBar.hasSlash());
}

TEST_F(SharedMachineTest, AMouseThatStayedMutesOnReturnWithoutAnotherWrite) {
    startMuted();
    leave();
    computer.queue.advance(10s);
    comeBack();
    EXPECT_EQ(computer.flag(), "on");
    EXPECT_EQ(computer.flagWrites(), (Texts{"off", "on"}));
    EXPECT_TRUE(computer.log.lines.empty());
}

TEST_F(SharedMachineTest, AMouseRemovedAndAttachedDuringAnotherUsersSessionMutesOnReturn) {
    startMuted();
    leave();
    computer.hid.detach(plugged);
    computer.queue.advance(10s);
    computer.hid.attach(mouse);
    computer.queue.advance(10s);
    comeBack();
    EXPECT_EQ(computer.flag(), "on");
    EXPECT_TRUE(computer.statusBar.hasSlash());
}

TEST_F(SharedMachineTest, AMouseAttachedDuringAnotherUsersSessionMutesOnReturn) {
    startMuted();
    computer.hid.detach(plugged);
    computer.queue.advance(10s);
    EXPECT_EQ(computer.flag(), "off");
    leave();
    computer.hid.attach(mouse);
    computer.queue.advance(10s);
    comeBack();
    EXPECT_EQ(computer.flag(), "on");
}

TEST_F(SharedMachineTest, AProgramStartedDuringAnotherUsersSessionWritesOnReturn) {
    computer.files.contents[HelperController::stateFile] = "on";
    computer.files.failAlways("Permission denied");
    rig.emplace(computer).launch();
    computer.queue.advance(10s);
    EXPECT_EQ(computer.flag(), "on");
    computer.files.failAlways(std::nullopt);
    rig->application.resume();
    computer.queue.run();
    EXPECT_EQ(computer.flag(), "off");
}

}  // namespace
}  // namespace kovra
