#include <fcntl.h>
#include <gtest/gtest.h>

#include <optional>

#include "helper/Daemon.h"
#include "tests/helper/DaemonRig.h"

namespace kovra::helper {
namespace {

// Who is at the machine, and whether their application lives.
class DaemonPeopleTest : public testing::Test {
  protected:
    Descriptor openedBy(uid_t user) const {
        const Being application(user);
        return Descriptor(::open(rig.flag.state().c_str(), O_WRONLY | O_CLOEXEC));
    }

    DaemonRig rig;
};

TEST_F(DaemonPeopleTest, GivesThePadBackWhenTheApplicationEndsAndLeavesTheFlagAlone) {
    rig.startMuted();
    rig.ends(alice);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "on");
}

TEST_F(DaemonPeopleTest, MutesNothingWithoutTheApplication) {
    rig.start();
    rig.atTheMachine = alice;
    rig.daemon->evaluate();
    rig.flag.write(alice, "on");
    rig.settle();
    EXPECT_TRUE(rig.is("0"));
}

TEST_F(DaemonPeopleTest, HasFoundTheApplicationBeforeTheFlagSaysOn) {
    rig.start();
    rig.sitsDown(alice);
    EXPECT_EQ(rig.askedFor, alice);
}

TEST_F(DaemonPeopleTest, ForgetsTheApplicationOnceNobodyIsThere) {
    rig.startMuted();
    rig.forgotten = 0;
    rig.settle();
    EXPECT_EQ(rig.forgotten, 0);
    rig.sitsDown(std::nullopt);
    EXPECT_GT(rig.forgotten, 0);
}

TEST_F(DaemonPeopleTest, GivesThePadBackWhenNobodyIsThereAnyMore) {
    rig.startMuted();
    rig.sitsDown(std::nullopt);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_FALSE(mayWrite(alice, rig.flag.state()));
}

TEST_F(DaemonPeopleTest, GivesTheNextUserAFlagOfTheirOwnThatIsOff) {
    rig.startMuted();
    rig.sitsDown(bob);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
    EXPECT_TRUE(mayWrite(bob, rig.flag.state()));
    EXPECT_FALSE(mayWrite(alice, rig.flag.state()));
}

TEST_F(DaemonPeopleTest, MutesAgainForTheUserWhoReturns) {
    rig.startMuted();
    rig.sitsDown(bob);
    ASSERT_TRUE(rig.is("0"));
    rig.sitsDown(alice);
    EXPECT_TRUE(rig.is("1"));
    EXPECT_TRUE(mayWrite(alice, rig.flag.state()));
    EXPECT_FALSE(mayWrite(bob, rig.flag.state()));
}

TEST_F(DaemonPeopleTest, DoesNotMuteForAUserWhoseApplicationWroteOffWhileTheyWereAway) {
    rig.startMuted();
    const Descriptor kept = openedBy(alice);
    rig.sitsDown(bob);
    FlagRig::writeTo(kept, "off");
    rig.sitsDown(alice);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
}

TEST_F(DaemonPeopleTest, IsNotMovedByAnOpenDescriptorOfTheUserBefore) {
    rig.startMuted();
    const Descriptor kept = openedBy(alice);
    rig.sitsDown(bob);
    FlagRig::writeTo(kept, "off");
    FlagRig::writeTo(kept, "on");
    rig.settle();
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
}

}  // namespace
}  // namespace kovra::helper
