#include "BLE_kovra/app/FactsOfState.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "tests/support/AppRig.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Presence = ApplicationFacts::Presence;
using Chosen = std::vector<ApplicationFacts::ChosenDevice>;

const DeviceDescription wireless = aMouse("Wireless Mouse").ids(4660, 22136);
const DeviceDescription trackball = aMouse("Track#ball").ids(1, 2);
const DeviceDescription unseen = aMouse("Mouse #2").ids(3, 4);

TEST(FactsOfStateTest, AreThoseOfAFirstStart) {
    Computer computer;
    AppRig rig(computer);
    EXPECT_EQ(rig.delegate->facts(), (ApplicationFacts{.isEnabled = true, .mode = "onDevice"}));
    rig.launch();
    EXPECT_EQ(rig.delegate->facts(), (ApplicationFacts{.isEnabled = true, .mode = "onDevice", .lastWritten = "off"}));
}

TEST(FactsOfStateTest, FollowTheSwitchTheModeAndTheFlag) {
    Computer computer;
    AppRig rig(computer);
    rig.launch();
    rig.state.mode.set(AppState::BlockMode::always);
    computer.queue.run();
    EXPECT_EQ(rig.delegate->facts(),
              (ApplicationFacts{.isEnabled = true, .mode = "always", .isMuting = true, .lastWritten = "on"}));
    computer.files.failAlways("Permission denied");
    rig.state.isEnabled.set(false);
    computer.queue.run();
    EXPECT_EQ(rig.delegate->facts(), (ApplicationFacts{.isEnabled = false, .mode = "always", .lastWritten = "on"}));
}

TEST(FactsOfStateTest, FollowAChosenDeviceThroughItsGracePeriod) {
    Computer computer;
    computer.choose({wireless, trackball, unseen});
    AppRig rig(computer);
    rig.launch();
    EXPECT_EQ(
        rig.delegate->facts().chosen,
        (Chosen{{"Mouse #2", Presence::away}, {"Track#ball", Presence::away}, {"Wireless Mouse", Presence::away}}));
    const auto attached = computer.hid.attach(wireless);
    computer.hid.attach(aMouse("not chosen"));
    computer.hid.attach(trackball);
    computer.queue.run();
    EXPECT_EQ(rig.delegate->facts().chosen, (Chosen{{"Track#ball", Presence::connected},
                                                    {"Wireless Mouse", Presence::connected},
                                                    {"Mouse #2", Presence::away}}));
    computer.hid.detach(attached);
    computer.queue.advance(1s);
    EXPECT_EQ(rig.delegate->facts().chosen[1], (ApplicationFacts::ChosenDevice{"Wireless Mouse", Presence::inGrace}));
    EXPECT_TRUE(rig.delegate->facts().isMuting);
    computer.queue.advance(1s);
    EXPECT_EQ(rig.delegate->facts().chosen[1], (ApplicationFacts::ChosenDevice{"Wireless Mouse", Presence::away}));
}

}  // namespace
}  // namespace kovra
