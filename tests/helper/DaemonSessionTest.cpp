#include <fcntl.h>
#include <gtest/gtest.h>

#include <optional>

#include "helper/Daemon.h"
#include "tests/helper/Changes.h"
#include "tests/helper/DaemonRig.h"

namespace kovra::helper {
namespace {

class DaemonSessionTest : public testing::Test {
  protected:
    Descriptor openedBy(uid_t user) const {
        const ActingAs application(user);
        return Descriptor(::open(rig.flag.state().c_str(), O_WRONLY | O_CLOEXEC));
    }

    DaemonRig rig;
};

TEST_F(DaemonSessionTest, UnmutesThePadWhenTheApplicationEndsAndKeepsTheFlag) {
    rig.startMuted();
    rig.endApplication(alice);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "on");
}

TEST_F(DaemonSessionTest, MutesNothingWithoutTheApplication) {
    rig.start();
    rig.activeUser = alice;
    rig.daemon->evaluate();
    rig.flag.write(alice, "on");
    rig.awaitLook();
    EXPECT_TRUE(rig.is("0"));
}

TEST_F(DaemonSessionTest, FindsTheApplicationBeforeTheFlagSaysOn) {
    rig.start();
    rig.switchTo(alice);
    EXPECT_EQ(rig.searchedFor, alice);
}

TEST_F(DaemonSessionTest, UnmutesThePadBeforeItSearchesForAnotherApplication) {
    rig.startMuted();
    rig.searchedFor.reset();
    rig.wasMutedInSearch = true;
    rig.endApplication(alice);
    EXPECT_EQ(rig.searchedFor, alice);
    EXPECT_FALSE(rig.wasMutedInSearch);
}

TEST_F(DaemonSessionTest, SearchesNothingWhileItHoldsTheApplication) {
    rig.startMuted();
    rig.searchedFor.reset();
    rig.awaitLook();
    EXPECT_EQ(rig.searchedFor, std::nullopt);
    EXPECT_TRUE(rig.is("1"));
}

TEST_F(DaemonSessionTest, ReleasesTheApplicationOnceThereIsNoUser) {
    rig.startMuted();
    rig.releases = 0;
    rig.awaitLook();
    EXPECT_EQ(rig.releases, 0);
    rig.switchTo(std::nullopt);
    EXPECT_GT(rig.releases, 0);
}

TEST_F(DaemonSessionTest, UnmutesThePadOnceThereIsNoUser) {
    rig.startMuted();
    rig.switchTo(std::nullopt);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_FALSE(mayWrite(alice, rig.flag.state()));
}

TEST_F(DaemonSessionTest, GivesTheNextUserTheirOwnFlagThatSaysOff) {
    rig.startMuted();
    rig.switchTo(bob);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
    EXPECT_TRUE(mayWrite(bob, rig.flag.state()));
    EXPECT_FALSE(mayWrite(alice, rig.flag.state()));
}

TEST_F(DaemonSessionTest, UnmutesThePadBeforeAHandOver) {
    rig.startMuted();
    const Changes changes({rig.computer.attribute("input5"), rig.flag.path()});
    rig.switchTo(bob);
    EXPECT_EQ(changes.first(), rig.computer.attribute("input5"));
}

TEST_F(DaemonSessionTest, MutesAgainForTheUserWhoReturns) {
    rig.startMuted();
    rig.switchTo(bob);
    ASSERT_TRUE(rig.is("0"));
    rig.switchTo(alice);
    EXPECT_TRUE(rig.is("1"));
    EXPECT_TRUE(mayWrite(alice, rig.flag.state()));
    EXPECT_FALSE(mayWrite(bob, rig.flag.state()));
}

TEST_F(DaemonSessionTest, DoesNotMuteForAReturningUserWhoseApplicationWroteOff) {
    rig.startMuted();
    const Descriptor kept = openedBy(alice);
    rig.switchTo(bob);
    FlagRig::writeTo(kept, "off");
    rig.switchTo(alice);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
}

TEST_F(DaemonSessionTest, IgnoresWritesThroughADescriptorOfThePreviousUser) {
    rig.startMuted();
    const Descriptor kept = openedBy(alice);
    rig.switchTo(bob);
    FlagRig::writeTo(kept, "off");
    FlagRig::writeTo(kept, "on");
    rig.awaitLook();
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
}

}  // namespace
}  // namespace kovra::helper
