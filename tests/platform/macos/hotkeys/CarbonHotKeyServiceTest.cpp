#include "BLE_kovra/platform/macos/hotkeys/CarbonHotKeyService.h"

#include <cstdlib>
#include <string>

#include "tests/contracts/HotKeyServiceContract.h"
#include "tests/platform/macos/FrameworkRig.h"

namespace kovra {
namespace {

using Strings = std::vector<std::string>;

constexpr std::uint32_t controlAndOption = 0x1800;

class CarbonDriver {
  public:
    HotKeyService& service() { return service_; }
    bool press() { return FakeHotKeys::press(0x11, controlAndOption); }
    void settle() { FakeRunLoop::settle(); }
    void takeByAnother() { FakeHotKeys::takeByAnother(0x11, controlAndOption); }

  private:
    FrameworkRig frameworks_;
    CarbonHotKeyService service_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(CarbonHotKeyService, HotKeyServiceContract, CarbonDriver);

class CarbonHotKeyServiceTest : public testing::Test {
  protected:
    static constexpr HotKey hotKey{.keyCode = HotKey::ansiT,
                                   .modifiers = HotKey::controlKey | HotKey::optionKey,
                                   .signature = 0x54475244,
                                   .number = 1};

    FrameworkRig frameworks_;
    CarbonHotKeyService service_;
};

TEST_F(CarbonHotKeyServiceTest, RegistersOneHotKeyAndReleasesEachReferenceOnce) {
    auto handler = service_.installHandler([] { return 0; });
    auto registered = service_.registerHotKey(hotKey);
    EXPECT_EQ(FakeHotKeys::takeRequests(),
              (Strings{"install for 6b657962/5", "register 11+1800 as 54475244/1, options 0"}));
    registered.reset();
    handler.reset();
    EXPECT_EQ(FakeHotKeys::takeRequests(), (Strings{"unregister", "remove"}));
}

TEST_F(CarbonHotKeyServiceTest, SharesTheKeyWithAProgramThatHasRegisteredItToo) {
    FakeHotKeys::shareWithAnother(0x11, controlAndOption);
    int pressed = 0;
    const auto handler = service_.installHandler([&] { return ++pressed, 0; });
    const auto registered = service_.registerHotKey(hotKey);
    ASSERT_NE(registered, nullptr);
    EXPECT_FALSE(FakeHotKeys::press(0x11, controlAndOption));
    EXPECT_EQ(pressed, 1) << "once, though the key is released afterwards";
    EXPECT_EQ(FakeHotKeys::pressedForAnother(), 1);
}

TEST_F(CarbonHotKeyServiceTest, ReturnsNullIfTheSystemRefuses) {
    FakeHotKeys::takeByAnother(0x11, controlAndOption);
    FakeHotKeys::refuseHandlers(true);
    EXPECT_EQ(service_.installHandler([] { return 0; }), nullptr);
    EXPECT_EQ(service_.registerHotKey(hotKey), nullptr);
    EXPECT_EQ(FakeHotKeys::held(), 0U);
}

TEST_F(CarbonHotKeyServiceTest, CallsNoHandlerThatTheSystemRefused) {
    int pressed = 0;
    const auto installed = service_.installHandler([&] { return ++pressed, 0; });
    FakeHotKeys::refuseHandlers(true);
    const auto refused = service_.installHandler([] {
        ADD_FAILURE() << "the refused handler was called";
        return 0;
    });
    const auto registered = service_.registerHotKey(hotKey);
    FakeHotKeys::press(0x11, controlAndOption);
    EXPECT_EQ(pressed, 1);
}

TEST_F(CarbonHotKeyServiceTest, AllowsAHandlerToDestroyItself) {
    std::unique_ptr<HotKeyService::Reference> handler;
    int pressed = 0;
    handler = service_.installHandler([&] {
        handler.reset();
        return ++pressed, 0;
    });
    const auto registered = service_.registerHotKey(hotKey);
    FakeHotKeys::press(0x11, controlAndOption);
    EXPECT_FALSE(FakeHotKeys::press(0x11, controlAndOption));
    EXPECT_EQ(pressed, 1);
}

TEST_F(CarbonHotKeyServiceTest, AllowsHandlersToBeRemovedInAnyOrder) {
    std::string called;
    auto first = service_.installHandler([&] { return called += "first ", 0; });
    auto second = service_.installHandler([&] { return called += "second ", 0; });
    const auto third = service_.installHandler([&] { return called += "third ", 0; });
    const auto registered = service_.registerHotKey(hotKey);
    second.reset();
    FakeHotKeys::press(0x11, controlAndOption);
    first.reset();
    FakeHotKeys::press(0x11, controlAndOption);
    EXPECT_EQ(called, "third third ");
}

// exit() destroys the objects with static storage in the order opposite to their construction. An application that is
// told of its end by std::atexit() removes its handler then.
TEST(CarbonHotKeyServiceDeathTest, AllowsAHandlerToBeRemovedByExit) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";  // no earlier test has installed a handler in that process
    static HotKeyService::Reference* handler = nullptr;
    EXPECT_EXIT(
        {
            std::atexit([] { delete handler; });
            handler = CarbonHotKeyService().installHandler([] { return 0; }).release();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(CarbonHotKeyServiceTest, IgnoresAPressWithOtherModifiers) {
    int pressed = 0;
    const auto handler = service_.installHandler([&] { return ++pressed, 0; });
    const auto registered = service_.registerHotKey(hotKey);
    for (const std::uint32_t modifiers : {0x1000U, 0x0800U, 0x1A00U, 0x1900U}) {
        EXPECT_TRUE(FakeHotKeys::press(0x11, modifiers));
    }
    EXPECT_EQ(pressed, 0);
}

}  // namespace
}  // namespace kovra
