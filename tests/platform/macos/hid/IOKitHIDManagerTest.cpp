#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/macos/hid/IOKitHIDManager.h"
#include "tests/contracts/HIDManagerContract.h"
#include "tests/platform/macos/FrameworkRig.h"

namespace kovra {
namespace {

using Strings = std::vector<std::string>;

FakeIOKit::Plugged plugged(const DeviceDescription& device) {
    auto interface = std::make_shared<FakeInterface>();
    if (!device.registered) interface->registry = FakeInterface::Registry::none;
    if (device.vendorID) interface->set("VendorID", newInteger(*device.vendorID));
    if (device.productID) interface->set("ProductID", newInteger(*device.productID));
    if (device.product) interface->set("Product", newText(*device.product));
    return FakeIOKit::attach(std::move(interface));
}

class IOKitDriver {
  public:
    HIDService& service() { return service_; }

    // Attaches the device. Returns the indexes of its interfaces among all that were ever attached.
    std::vector<std::size_t> attach(const DeviceDescription& device) {
        std::vector<std::size_t> places;
        for (int i = 0; i < device.interfaceCount; ++i) {
            places.push_back(interfaces_.size());
            interfaces_.emplace_back(device, plugged(device));
        }
        return places;
    }
    void detach(const std::vector<std::size_t>& places) {
        for (const std::size_t place : places) FakeIOKit::detach(interfaces_[place].second);
    }
    // A renamed device detaches from the bus and attaches again.
    void rename(const std::vector<std::size_t>& places, const std::string& product) {
        detach(places);
        for (const std::size_t place : places) {
            auto& [device, interface] = interfaces_[place];
            device.product = product;
            interface = plugged(device);
        }
    }
    void settle() { FakeRunLoop::settle(); }

  private:
    FrameworkRig frameworks_;
    std::vector<std::pair<DeviceDescription, FakeIOKit::Plugged>> interfaces_;
    IOKitHIDService service_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(IOKitHIDManager, HIDManagerContract, IOKitDriver);

class IOKitHIDManagerTest : public testing::Test {
  protected:
    void open() {
        manager_ = service_.createManager();
        manager_->registerMatchingCallback([this](const HIDDevice& device) { report('+', device); });
        manager_->registerRemovalCallback([this](const HIDDevice& device) { report('-', device); });
        manager_->open();
    }
    void report(char sign, const HIDDevice& device) {
        reported_.push_back(sign + device.stringProperty("Product").value_or("?"));
        if (inspect_) inspect_(device);
    }
    // Attaches one interface with this property and inspects it in the callback.
    void see(const std::string& property, CFTypeRef value, std::function<void(const HIDDevice&)> inspect) {
        auto interface = std::make_shared<FakeInterface>();
        interface->set(property, value);
        FakeIOKit::attach(std::move(interface));
        inspect_ = std::move(inspect);
        open();
        FakeRunLoop::settle();
        ASSERT_EQ(reported_.size(), 1U);
    }

    FrameworkRig frameworks_;
    IOKitHIDService service_;
    std::unique_ptr<HIDManager> manager_;
    std::function<void(const HIDDevice&)> inspect_;
    Strings reported_;
};

TEST_F(IOKitHIDManagerTest, RequestsEveryDeviceInTheOrderThatTheSystemRequires) {
    open();
    EXPECT_EQ(FakeIOKit::takeRequests(), (Strings{"create 0", "match all", "call for attached", "call for removed",
                                                  "schedule in the common modes", "open 0"}));
    manager_.reset();
    EXPECT_EQ(FakeIOKit::takeRequests(), Strings());
}

TEST_F(IOKitHIDManagerTest, ReportsDevicesWithoutTheInputMonitoringPermission) {
    FakeIOKit::allowListening(false);
    plugged(aMouse("apple"));
    open();
    FakeRunLoop::settle();
    EXPECT_EQ(reported_, Strings{"+apple"});
}

TEST_F(IOKitHIDManagerTest, ReportsDevicesWhileAnAlertIsOpen) {
    open();
    const auto mouse = plugged(aMouse("apple"));
    FakeRunLoop::settle(FakeRunLoop::alertMode());
    FakeIOKit::detach(mouse);
    FakeRunLoop::settle(FakeRunLoop::alertMode());
    EXPECT_EQ(reported_, (Strings{"+apple", "-apple"}));
}

TEST_F(IOKitHIDManagerTest, ReportsADeviceThatWasRemovedBeforeItWasReported) {
    open();
    FakeIOKit::detach(plugged(aMouse("apple")));
    FakeRunLoop::settle();
    EXPECT_EQ(reported_, (Strings{"+apple", "-apple"}));
}

TEST_F(IOKitHIDManagerTest, DoesNothingWithoutAContext) {
    plugged(aMouse("apple"));
    open();
    FakeIOKit::callWithoutContext();
    EXPECT_EQ(reported_, Strings());
}

TEST_F(IOKitHIDManagerTest, IdentifiesAnInterfaceByItsHandleIfTheRegistryRefusesANumber) {
    auto interface = std::make_shared<FakeInterface>();
    interface->registry = FakeInterface::Registry::refusing;
    FakeIOKit::attach(interface);
    std::vector<std::uint64_t> handles;
    inspect_ = [&](const HIDDevice& device) {
        EXPECT_EQ(device.registryEntryID(), std::nullopt);
        handles.push_back(device.handle());
    };
    open();
    FakeRunLoop::settle();
    FakeIOKit::detach(interface);
    FakeRunLoop::settle();
    ASSERT_EQ(handles.size(), 2U);
    EXPECT_EQ(handles[0], handles[1]);
    EXPECT_NE(handles[0], 0U);
}

TEST_F(IOKitHIDManagerTest, ReturnsTheWholeRegistryNumber) {
    const auto mouse = plugged(aMouse("apple"));
    inspect_ = [&](const HIDDevice& device) { EXPECT_EQ(device.registryEntryID(), mouse->number); };
    open();
    FakeRunLoop::settle();
    EXPECT_GT(mouse->number, 0xFFFFFFFFU);
    EXPECT_EQ(reported_.size(), 1U);
}

TEST_F(IOKitHIDManagerTest, IgnoresAPropertyOfAnotherType) {
    see("VendorID", newText("1133"), [](const HIDDevice& device) {
        EXPECT_EQ(device.integerProperty("VendorID"), std::nullopt);
        EXPECT_EQ(device.stringProperty("VendorID"), "1133");
    });
}

TEST_F(IOKitHIDManagerTest, ReadsABooleanNeitherAsTextNorAsNumber) {
    see("Product", kCFBooleanTrue, [](const HIDDevice& device) {
        EXPECT_EQ(device.stringProperty("Product"), std::nullopt);
        EXPECT_EQ(device.integerProperty("Product"), std::nullopt);
    });
}

TEST_F(IOKitHIDManagerTest, ReadsNoIntegerFromAFraction) {
    const double fraction = 1.5;
    see("VendorID", CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &fraction),
        [](const HIDDevice& device) { EXPECT_EQ(device.integerProperty("VendorID"), std::nullopt); });
}

TEST_F(IOKitHIDManagerTest, ReturnsANumberBeyond32Bits) {
    see("VendorID", newInteger(-5'000'000'000),
        [](const HIDDevice& device) { EXPECT_EQ(device.integerProperty("VendorID"), -5'000'000'000); });
}

TEST_F(IOKitHIDManagerTest, ReturnsANameAsValidUtf8) {
    see("Product", new __CFString({u'М', 0xD800, u'ы', 0xDE00, 0xD83D, 0xDE00}),
        [](const HIDDevice& device) { EXPECT_EQ(device.stringProperty("Product"), "М\xEF\xBF\xBDы\xEF\xBF\xBD😀"); });
}

}  // namespace
}  // namespace kovra
