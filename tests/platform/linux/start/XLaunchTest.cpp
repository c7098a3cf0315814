#include "BLE_kovra/platform/linux/start/XLaunch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/RootListener.h"
#include "tests/support/linux/VirtualScreen.h"

namespace kovra {
namespace {

using Texts = std::vector<std::string>;

TEST(XLaunchMessageTest, NamesTheLaunch) {
    EXPECT_EQ(removeMessage("openbox/ble-kovra/1-0-host_TIME1"), "remove: ID=openbox/ble-kovra/1-0-host_TIME1");
}

TEST(XLaunchMessageTest, KeepsTheIDInOnePiece) { EXPECT_EQ(removeMessage(R"(a b"c\d)"), R"(remove: ID=a\ b\"c\\d)"); }

class XLaunchTest : public testing::Test {
  protected:
    Texts received(std::size_t count) {
        lookUntil(loop, [&] { return listener.messages().size() >= count; });
        return listener.messages();
    }

    const VirtualScreen screen;
    RootListener listener;
    SdEventLoop loop;
    std::unique_ptr<XConnection> x = XConnection::open(loop);
    XLaunch launch{*x};
};

TEST_F(XLaunchTest, SendsTheMessageToTheRootWindow) {
    launch.end("an-id_TIME1");
    EXPECT_EQ(received(1), Texts{"remove: ID=an-id_TIME1"});
}

TEST_F(XLaunchTest, SendsIDsOfAnyLength) {
    Texts expected;
    for (std::size_t length = 1; length <= 60; ++length) {
        launch.end(std::string(length, 'x'));
        expected.push_back("remove: ID=" + std::string(length, 'x'));
    }
    EXPECT_EQ(received(60), expected);
}

// As at the program's end, when the loop has stopped.
TEST_F(XLaunchTest, FinishesWithoutTheLoop) {
    launch.end("first_TIME1");
    received(1);
    launch.end("last_TIME2");
    launch.finish();
    EXPECT_EQ(listener.messages(), (Texts{"remove: ID=first_TIME1", "remove: ID=last_TIME2"}));
}

TEST_F(XLaunchTest, FinishesAlthoughTheServerHangs) {
    launch.end("an-id_TIME1");
    received(1);
    screen.pause();
    launch.end("late_TIME2");
    launch.finish();
    screen.goOn();
    EXPECT_EQ(received(2).back(), "remove: ID=late_TIME2");
}

TEST_F(XLaunchTest, DoesNotWaitForAServerThatHangs) {
    screen.pause();
    launch.end("an-id_TIME1");
    EXPECT_LT(turnsWithin(loop, std::chrono::milliseconds(50)), 10);
    screen.goOn();
    EXPECT_EQ(received(1), Texts{"remove: ID=an-id_TIME1"});
}

}  // namespace
}  // namespace kovra
