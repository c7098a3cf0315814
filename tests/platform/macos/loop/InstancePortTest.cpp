#include "BLE_kovra/platform/macos/loop/InstancePort.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/platform/macos/FrameworkRig.h"

namespace kovra {
namespace {

using Texts = std::vector<std::string>;

class InstancePortTest : public testing::Test {
  protected:
    static constexpr const char* name = "org.example.Program";

    FrameworkRig frameworks_;
    int asked_ = 0;
};

TEST_F(InstancePortTest, IsTheFirstIfNobodyHasTheName) {
    const InstancePort port(name);
    EXPECT_FALSE(port.isSecond());
    EXPECT_EQ(FakeMessagePorts::takeSent(), Texts());
}

TEST_F(InstancePortTest, AsksTheFirstAndIsTheSecond) {
    FakeMessagePorts::takeByAnother(name);
    const InstancePort port(name);
    EXPECT_TRUE(port.isSecond());
    EXPECT_EQ(FakeMessagePorts::takeSent(), Texts{name});
}

TEST_F(InstancePortTest, RunsIfTheOtherOneReceivesNothing) {
    FakeMessagePorts::takeByOneThatIsDeaf(name);
    InstancePort port(name);
    EXPECT_FALSE(port.isSecond());
    port.listen([this] { ++asked_; });
    FakeRunLoop::settle();
    EXPECT_EQ(asked_, 0);
}

TEST_F(InstancePortTest, DeliversEachMessageEvenWhileAnAlertIsOpen) {
    InstancePort port(name);
    port.listen([this] { ++asked_; });
    EXPECT_TRUE(FakeMessagePorts::sendFromAnother(name));
    EXPECT_EQ(asked_, 0) << "only from the run loop";
    FakeRunLoop::settle();
    EXPECT_EQ(asked_, 1);
    EXPECT_TRUE(FakeMessagePorts::sendFromAnother(name));
    EXPECT_TRUE(FakeMessagePorts::sendFromAnother(name));
    FakeRunLoop::settle(FakeRunLoop::alertMode());
    EXPECT_EQ(asked_, 3);
}

TEST_F(InstancePortTest, DeliversAMessageThatCameBeforeItListened) {
    InstancePort port(name);
    EXPECT_TRUE(FakeMessagePorts::sendFromAnother(name));
    FakeRunLoop::settle();
    port.listen([this] { ++asked_; });
    FakeRunLoop::settle();
    EXPECT_EQ(asked_, 1);
}

TEST_F(InstancePortTest, GivesTheNameBackWhenItIsDestroyed) {
    auto port = std::make_unique<InstancePort>(name);
    port->listen([this] { ++asked_; });
    EXPECT_TRUE(FakeMessagePorts::sendFromAnother(name));
    port.reset();
    FakeRunLoop::settle();
    EXPECT_EQ(asked_, 0);
    EXPECT_FALSE(FakeMessagePorts::sendFromAnother(name));
}

}  // namespace
}  // namespace kovra
