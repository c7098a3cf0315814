#include <fcntl.h>
#include <gtest/gtest.h>

#include <optional>

#include "helper/Daemon.h"
#include "tests/helper/DaemonRig.h"

namespace kovra::helper {
namespace {

// Who is at the machine, and whether their application lives.
class DaemonSessionTest : public testing::Test {
  protected:
    Descriptor openedBy(uid_t user) const {
        const ActingAs application(user);
        return Descriptor(::open(rig.flag.state().c_str(), O_WRONLY | O_CLOEXEC));
    }

    DaemonRig rig;
};

TEST_F(DaemonSessionTest, GivesThePadBackWhenTheApplicationEndsAndLeavesTheFlagAlone) {
    rig.startMuted();
    rig.ends(alice);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "on");
}

TEST_F(DaemonSessionTest, MutesNothingWithoutTheApplication) {
    rig.start();
    rig.activeUser = alice;
    rig.daemon->evaluate();
    rig.flag.write(alice, "on");
    rig.settle();
    EXPECT_TRUE(rig.is("0"));
}

TEST_F(DaemonSessionTest, HasFoundTheApplicationBeforeTheFlagSaysOn) {
    rig.start();
    rig.switchTo(alice);
    EXPECT_EQ(rig.askedFor, alice);
}

TEST_F(DaemonSessionTest, ForgetsTheApplicationOnceNobodyIsThere) {
    rig.startMuted();
    rig.releases = 0;
    rig.settle();
    EXPECT_EQ(rig.releases, 0);
    rig.switchTo(std::nullopt);
    EXPECT_GT(rig.releases, 0);
}

TEST_F(DaemonSessionTest, GivesThePadBackWhenNobodyIsThereAnyMore) {
    rig.startMuted();
    rig.switchTo(std::nullopt);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_FALSE(mayWrite(alice, rig.flag.state()));
}

TEST_F(DaemonSessionTest, GivesTheNextUserAFlagOfTheirOwnThatIsOff) {
    rig.startMuted();
    rig.switchTo(bob);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
    EXPECT_TRUE(mayWrite(bob, rig.flag.state()));
    EXPECT_FALSE(mayWrite(alice, rig.flag.state()));
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

TEST_F(DaemonSessionTest, DoesNotMuteForAUserWhoseApplicationWroteOffWhileTheyWereAway) {
    rig.startMuted();
    const Descriptor kept = openedBy(alice);
    rig.switchTo(bob);
    FlagRig::writeTo(kept, "off");
    rig.switchTo(alice);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
}

TEST_F(DaemonSessionTest, IsNotMovedByAnOpenDescriptorOfTheUserBefore) {
    rig.startMuted();
    const Descriptor kept = openedBy(alice);
    rig.switchTo(bob);
    FlagRig::writeTo(kept, "off");
    FlagRig::writeTo(kept, "on");
    rig.settle();
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
}

}  // namespace
}  // namespace kovra::helper
