#include "BLE_kovra/devices/DeviceIdentity.h"

#include <gtest/gtest.h>

#include <string>
#include <unordered_set>

#include "BLE_kovra/devices/HIDDeviceInfo.h"
#include "BLE_kovra/l10n/L10n.h"
#include "tests/fakes/FakeHID.h"
#include "tests/fakes/FakeMainQueue.h"

namespace kovra {
namespace {

// The identity of a device, determined inside the callback that reports its attachment.
struct Seen {
    std::uint64_t id;
    std::string key;
    std::string name;
};

Seen see(const DeviceDescription& device, const char* language = "en") {
    FakeMainQueue queue;
    FakeHID hid(queue);
    hid.deliverAtOnce();
    const L10n texts({language});
    const auto manager = hid.createManager();
    Seen seen{};
    manager->registerMatchingCallback([&](const HIDDevice& attached) {
        seen = {interfaceID(attached), userKey(attached, texts), displayName(attached, texts)};
    });
    manager->open();
    hid.attach(device);
    return seen;
}

TEST(DeviceIdentityTest, JoinsNameVendorAndProductInDecimal) {
    EXPECT_EQ(see(aMouse("Wireless Mouse").ids(4660, 22136)).key, "Wireless Mouse#4660:22136");
}

TEST(DeviceIdentityTest, UsesZeroForMissingNumbers) {
    EXPECT_EQ(see(aMouse("Mouse").ids(std::nullopt, std::nullopt)).key, "Mouse#0:0");
    EXPECT_EQ(see(aMouse("Mouse").ids(std::nullopt, 7)).key, "Mouse#0:7");
}

TEST(DeviceIdentityTest, NamesANamelessDeviceInTheUsersLanguage) {
    EXPECT_EQ(see(aNamelessDevice().ids(1, 2)).key, "Unknown device#1:2");
    EXPECT_EQ(see(aNamelessDevice().ids(1, 2)).name, "Unknown device");
    EXPECT_EQ(see(aNamelessDevice().ids(1, 2), "ru").key, "Неизвестное устройство#1:2");
    EXPECT_EQ(see(aNamelessDevice().ids(1, 2), "de").name, "Unbekanntes Gerät");
}

TEST(DeviceIdentityTest, KeepsAnEmptyNameThatTheDeviceReports) {
    EXPECT_EQ(see(aMouse("").ids(1, 2)).key, "#1:2");
    EXPECT_EQ(see(aMouse("").ids(1, 2)).name, "");
}

TEST(DeviceIdentityTest, UsesAnyNameLiterally) {
    EXPECT_EQ(see(aMouse("a#1:2\n&<b>").ids(3, 4)).key, "a#1:2\n&<b>#3:4");
}

TEST(DeviceIdentityTest, IdentifiesInterfacesByRegistryIDOrHandle) {
    EXPECT_EQ(see(aMouse("Mouse")).id, 1U);
    EXPECT_EQ(see(aMouse("Mouse").withoutRegistryEntry()).id, 0x7F0000000001U);
}

TEST(HIDDeviceInfoTest, IsEqualAndHashedByAllThreeFields) {
    const HIDDeviceInfo mouse{"key", "name", true};
    std::unordered_set<HIDDeviceInfo> set{mouse, {"key", "name", true}};
    EXPECT_EQ(set.size(), 1U);
    for (const HIDDeviceInfo& other : {HIDDeviceInfo{"other", "name", true}, HIDDeviceInfo{"key", "other", true},
                                       HIDDeviceInfo{"key", "name", false}}) {
        EXPECT_NE(mouse, other);
        EXPECT_NE(std::hash<HIDDeviceInfo>{}(mouse), std::hash<HIDDeviceInfo>{}(other));
        EXPECT_TRUE(set.insert(other).second);
    }
}

}  // namespace
}  // namespace kovra
