#include "BLE_kovra/platform/linux/hid/UdevHIDDevice.h"

#include <gtest/gtest.h>

#include <iostream>
#include <random>

#include "BLE_kovra/platform/Utf8.h"
#include "tests/platform/linux/hid/UdevHIDRig.h"
#include "tests/support/Seeds.h"

namespace kovra {
namespace {

constexpr const char* someNode = "0003:046D:C077.0001";
constexpr const char* someID = "0003:0000046D:0000C077";

std::optional<std::uint64_t> numberOf(std::string_view nodeName) {
    return UdevHIDDevice(nodeName, someID, "apple").registryEntryID();
}
std::optional<std::string> nameOf(std::optional<std::string_view> hidName) {
    return UdevHIDDevice(someNode, someID, hidName).stringProperty("Product");
}
using Numbers = std::pair<std::optional<std::int64_t>, std::optional<std::int64_t>>;
Numbers numbersOf(std::optional<std::string_view> hidID) {
    const UdevHIDDevice device(someNode, hidID, "apple");
    return {device.integerProperty("VendorID"), device.integerProperty("ProductID")};
}

TEST(UdevHIDDeviceTest, TakesItsNumberFromTheEndOfTheNodesName) {
    EXPECT_EQ(numberOf("0003:046D:C077.0001"), 1U);
    EXPECT_EQ(numberOf("0005:046D:B023.00AF"), 0xAFU);
    EXPECT_EQ(numberOf("0003:046D:C077.1F00A"), 0x1F00AU);
    EXPECT_EQ(numberOf("0003:046D:C077.FFFFFFFF"), 0xFFFFFFFFU);
}

TEST(UdevHIDDeviceTest, HasNoNumberIfTheNodesNameEndsOtherwise) {
    for (const char* name : {"", ".", "0003:046D:C077", "0003:046D:C077.", "0003:046D:C077.00G1", "0003:046D:C077.-1",
                             "0003:046D:C077.0x1", "0003:046D:C077.0001 ", "a.b.x", "0003:046D:C077.100000000"}) {
        EXPECT_EQ(numberOf(name), std::nullopt) << name;
    }
}

TEST(UdevHIDDeviceTest, HasAStableHandleThatIsNoRegistryNumber) {
    const auto handleOf = [](std::string_view name) { return UdevHIDDevice(name, {}, {}).handle(); };
    EXPECT_EQ(handleOf("odd"), handleOf("odd"));
    EXPECT_NE(handleOf("odd"), handleOf("even"));
    EXPECT_GT(handleOf("odd"), 0xFFFFFFFFU);
}

TEST(UdevHIDDeviceTest, ReadsTheNumbersAsHexadecimal) {
    EXPECT_EQ(numbersOf("0003:00001234:00005678"), Numbers(4660, 22136));
    EXPECT_EQ(numbersOf("0005:0000046d:0000b023"), Numbers(1133, 45091));
    EXPECT_EQ(numbersOf("3:1:2"), Numbers(1, 2));
    EXPECT_EQ(numbersOf("0003:00000000:00000000"), Numbers(0, 0));
    EXPECT_EQ(numbersOf("0018:FFFFFFFF:FFFFFFFE"), Numbers(4294967295, 4294967294));
}

TEST(UdevHIDDeviceTest, HasNoNumbersIfTheIDIsInvalid) {
    EXPECT_EQ(numbersOf(std::nullopt), Numbers());
    for (const char* id : {"", ":", "::", ":::", "0003", "0003:0000046D", "0003:0000046D:", "0003::0000C077",
                           ":0000046D:0000C077", "0003:0000046D:0000C077:1", "0003:0000046D:0000C07G",
                           "0003:-000046D:0000C077", "0003:100000000:0000C077", "0x3:0x46D:0xC077", " 3:46D:C077"}) {
        EXPECT_EQ(numbersOf(id), Numbers()) << id;
    }
}

TEST(UdevHIDDeviceTest, KeepsANameUnchanged) {
    for (const char* name : {"apple", " ", "Мышь", "a#1:2", "%s%n", "HID", "HID Mouse", "HID 046d", "HID 046d:c077 ",
                             "hid 046d:c077", "HID 046d-c077", "HID 046g:c077", "HID  46d:c077"}) {
        EXPECT_EQ(nameOf(name), name) << name;
    }
}

TEST(UdevHIDDeviceTest, IgnoresANameThatTheKernelHasMadeUp) {
    EXPECT_EQ(nameOf(std::nullopt), std::nullopt);
    EXPECT_EQ(nameOf(""), std::nullopt);
    EXPECT_EQ(nameOf("HID 1234:5678"), std::nullopt);
    EXPECT_EQ(nameOf("HID 09af:09AF"), std::nullopt);
}

TEST(UdevHIDDeviceTest, KeepsTheWholeOfALongName) {
    const std::string name(4096, 'x');
    EXPECT_EQ(nameOf(name), name);
}

TEST(UdevHIDDeviceTest, ReplacesInvalidUtf8) {
    EXPECT_EQ(nameOf("a\xFFz"), "a\xEF\xBF\xBDz");
    EXPECT_EQ(nameOf("\xD0"), "\xEF\xBF\xBD");
    EXPECT_EQ(nameOf("\xC0\xAF"), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(UdevHIDDeviceTest, IsComparedByNameAndNumbers) {
    const UdevHIDDevice device(someNode, someID, "apple");
    EXPECT_EQ(device, UdevHIDDevice(someNode, someID, "apple"));
    EXPECT_FALSE(device == UdevHIDDevice(someNode, someID, "pear"));
    EXPECT_FALSE(device == UdevHIDDevice(someNode, someID, std::nullopt));
    EXPECT_FALSE(device == UdevHIDDevice(someNode, "0003:0000046D:0000C078", "apple"));
    EXPECT_FALSE(device == UdevHIDDevice(someNode, "0003:0000046E:0000C077", "apple"));
    EXPECT_FALSE(device == UdevHIDDevice("0003:046D:C077.0002", someID, "apple"));
}

// A generator of properties with arbitrary bytes. The tests print each seed, so that a failure can be reproduced.
class AnyBytes {
  public:
    explicit AnyBytes(std::uint32_t seed) : generator_(seed) {}

    std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(generator_); }
    std::string text(std::size_t most) {
        static constexpr std::string_view likely = ":.#0123ABCDEFabc HID\xD0\x9C\xE2\x82\xF0\x9F\xED\xA0";
        std::string text;
        for (std::size_t left = upTo(most); left > 0; --left) {
            const bool isLikely = upTo(2) > 0;
            const char c = isLikely ? likely[upTo(likely.size() - 1)] : static_cast<char>(upTo(255));
            if (c != '\0') text += c;
        }
        return text;
    }

  private:
    std::mt19937_64 generator_;
};

TEST(UdevHIDDeviceTest, SurvivesPropertiesOfAnyBytes) {
    for (const std::uint32_t seed : fixedAndFreshSeeds(2)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::cout << "seed " << seed << '\n';
        AnyBytes any(seed);
        for (int round = 0; round < 20'000; ++round) {
            const std::string node = any.text(24), id = any.text(24), name = any.text(40);
            const UdevHIDDevice device(node, id, name);
            const auto read = device.stringProperty("Product");
            ASSERT_TRUE(!read || (!read->empty() && validUtf8(*read) == *read));
            ASSERT_TRUE(device == UdevHIDDevice(node, id, name));
            ASSERT_EQ(device.integerProperty("VendorID").has_value(), device.integerProperty("ProductID").has_value());
            ASSERT_LE(device.registryEntryID().value_or(0), 0xFFFFFFFFU);
        }
    }
}

TEST(UdevHIDDeviceTest, SurvivesNodesOfAnyBytes) {
    for (const std::uint32_t seed : fixedAndFreshSeeds(2)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::cout << "seed " << seed << '\n';
        AnyBytes any(seed);
        UdevHIDRig rig;
        rig.open();
        for (int round = 0; round < 100; ++round) {
            MockHIDNode node{.name = rig.bus.nextName(), .product = any.text(300), .id = any.text(30)};
            rig.bus.plug(node);
            rig.settle();
            node.product = any.text(300);
            rig.bus.updateNode(node);
            rig.bus.sendEvent(node.name, "change");
            if (any.upTo(1) == 0) rig.bus.unplug(node.name);
            rig.settle();
        }
        ASSERT_GE(rig.reports.size(), 100U);
        for (const std::string& report : rig.reports) ASSERT_EQ(validUtf8(report), report);
    }
}

}  // namespace
}  // namespace kovra
