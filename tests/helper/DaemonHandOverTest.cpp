#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "helper/Daemon.h"
#include "tests/helper/DaemonRig.h"
#include "tests/helper/RunUntil.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

class DaemonHandOverTest : public testing::Test {
  protected:
    // Makes a hand-over fail if its user has no file state.left.UID. The folder state.new is not empty, so the helper
    // cannot remove it. The name that the helper would give this folder instead exists already.
    void obstruct() {
        fs::create_directories(inTheWay / "something");
        struct stat status{};
        ASSERT_EQ(::stat(inTheWay.c_str(), &status), 0);
        fs::create_directories(rig.flag.path("state.new.odd." + std::to_string(status.st_ino)));
    }
    // Starts a daemon with these delays and this limit. It records the time of each of its evaluations.
    void startWith(Backoff pauses, RateLimit handOvers = RateLimit(1'000, 1ms)) {
        rig.start();
        handleEvents(rig.flag.loop());
        const Daemon::Session session{.activeUser =
                                          [this] {
                                              evaluations.push_back(std::chrono::steady_clock::now());
                                              return rig.activeUser;
                                          },
                                      .heldApplicationStart = [](uid_t) { return BootTime::zero(); },
                                      .applicationStart = [](uid_t) { return BootTime::zero(); },
                                      .releaseApplication = [] {}};
        rig.daemon = std::make_unique<Daemon>(rig.flag.loop(), session, rig.flag.folder(), *rig.touchpads, *rig.muter,
                                              pauses, handOvers);
    }
    bool becomesTheFlagOf(uid_t user) {
        return rig.flag.runUntil([&] { return mayWrite(user, rig.flag.state()); });
    }

    std::vector<std::chrono::steady_clock::time_point> evaluations;
    DaemonRig rig;
    const fs::path inTheWay = rig.flag.path("state.new");
};

TEST_F(DaemonHandOverTest, ThatFailsMutesNothingAndIsRetried) {
    rig.startMuted();
    obstruct();
    rig.switchTo(bob);
    rig.awaitLook();
    EXPECT_TRUE(rig.is("0"));
    EXPECT_FALSE(mayWrite(alice, rig.flag.state()));
    EXPECT_FALSE(mayWrite(bob, rig.flag.state()));
    fs::remove_all(inTheWay);
    EXPECT_TRUE(becomesTheFlagOf(bob));
    rig.flag.write(bob, "on");
    EXPECT_TRUE(rig.becomes("1"));
}

TEST_F(DaemonHandOverTest, ThatFailedIsRetriedForTheSameUserOnlyAfterTheDelay) {
    startWith(Backoff(1h, 1h));
    obstruct();
    rig.switchTo(bob);
    fs::remove_all(inTheWay);
    for (int i = 0; i < 20; ++i) rig.daemon->evaluate();
    const std::size_t before = evaluations.size();
    writeFile(rig.flag.state(), "on");
    ASSERT_TRUE(rig.flag.runUntil([&] { return evaluations.size() > before; }));
    EXPECT_FALSE(mayWrite(bob, rig.flag.state()));
    rig.switchTo(alice);
    EXPECT_TRUE(mayWrite(alice, rig.flag.state()));
    rig.switchTo(bob);
    EXPECT_TRUE(mayWrite(bob, rig.flag.state()));
}

TEST_F(DaemonHandOverTest, ThatKeepsFailingIsRetriedWithGrowingDelays) {
    startWith(Backoff(20ms, 80ms));
    obstruct();
    rig.switchTo(bob);
    ASSERT_TRUE(rig.flag.runUntil([&] { return evaluations.size() >= 5; }));
    const std::vector<std::chrono::milliseconds> pauses{20ms, 40ms, 80ms, 80ms};
    for (std::size_t i = 0; i < pauses.size(); ++i) EXPECT_GE(evaluations[i + 1] - evaluations[i], pauses[i]) << i;
    fs::remove_all(inTheWay);
    EXPECT_TRUE(becomesTheFlagOf(bob));
}

TEST_F(DaemonHandOverTest, IsPutOffAfterAFewInARowAndUnmutesAtOnceAllTheSame) {
    startWith(Backoff(1h, 1h), RateLimit(3, 2s));
    for (const uid_t user : {alice, bob, alice}) {
        rig.switchTo(user);
        EXPECT_TRUE(mayWrite(user, rig.flag.state()));
    }
    rig.flag.write(alice, "on");
    ASSERT_TRUE(rig.becomes("1"));
    rig.switchTo(bob);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_FALSE(mayWrite(bob, rig.flag.state()));
    EXPECT_TRUE(becomesTheFlagOf(bob));
    EXPECT_FALSE(mayWrite(alice, rig.flag.state()));
    EXPECT_TRUE(rig.is("0"));
}

TEST_F(DaemonHandOverTest, ThatIsPutOffDoesNotTakePlaceIfTheUserIsBackInTime) {
    startWith(Backoff(1h, 1h), RateLimit(1, 1h));
    rig.switchTo(alice);
    rig.flag.write(alice, "on");
    ASSERT_TRUE(rig.becomes("1"));
    rig.switchTo(bob);
    EXPECT_TRUE(rig.is("0"));
    rig.switchTo(alice);
    EXPECT_TRUE(rig.is("1"));
}

TEST_F(DaemonHandOverTest, ThatFailsForAnotherUserOrAfterASuccessIsRetriedWithTheFirstDelay) {
    startWith(Backoff(10ms, 1h));
    obstruct();
    const auto retriesAreQuick = [&] {
        const std::size_t first = evaluations.size();
        return rig.flag.runUntil([&] { return evaluations.size() >= first + 4; }) &&
               evaluations[first + 3] - evaluations[first] < 600ms;
    };
    rig.switchTo(bob);
    ASSERT_TRUE(rig.flag.runUntil([&] { return evaluations.size() >= 6; }));  // Bob's next delay would be 320 ms
    rig.switchTo(alice);
    EXPECT_TRUE(retriesAreQuick());
    ASSERT_TRUE(rig.flag.runUntil([&] { return evaluations.size() >= 12; }));
    fs::remove_all(inTheWay);
    ASSERT_TRUE(becomesTheFlagOf(alice));
    obstruct();
    fs::remove(rig.flag.state());
    EXPECT_TRUE(retriesAreQuick());
}

}  // namespace
}  // namespace kovra::helper
