#include "helper/pads/InhibitedAttribute.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <string>

#include "tests/helper/pads/InputFolder.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {
namespace {

TEST(InhibitedAttributeTest, IsReadAndWritten) {
    InputFolder computer;
    const InhibitedAttribute attribute = computer.attribute();
    EXPECT_EQ(attribute.isInhibited("input5"), std::nullopt);
    EXPECT_EQ(attribute.setInhibited("input5", true), ENOENT);
    computer.plug("input5");
    EXPECT_EQ(attribute.isInhibited("input5"), false);
    EXPECT_EQ(attribute.setInhibited("input5", true), 0);
    EXPECT_EQ(attribute.isInhibited("input5"), true);
    computer.refuseWrites("input5");
    EXPECT_EQ(attribute.setInhibited("input5", false), ENOSPC);
}

TEST(InhibitedAttributeTest, IsUnknownUnlessItsValueIsZeroOrOne) {
    InputFolder computer;
    for (const std::string value : {"", "\n", "2\n", "yes\n"}) {
        computer.plug("input5", value);
        EXPECT_EQ(computer.attribute().isInhibited("input5"), std::nullopt) << value;
    }
}

TEST(InhibitedAttributeTest, IsGoneIfItsDeviceIsMissingAmongOtherDevices) {
    const TempFolder folder;
    const InhibitedAttribute attribute(folder.path().string());
    EXPECT_TRUE(attribute.meansGone(ENODEV));
    EXPECT_TRUE(attribute.meansGone(ENOENT));
    EXPECT_FALSE(attribute.meansGone(EIO));
    EXPECT_FALSE(attribute.meansGone(EACCES));
    const InhibitedAttribute missing(folder / "no/sys/class/input");
    EXPECT_TRUE(missing.meansGone(ENODEV));
    EXPECT_FALSE(missing.meansGone(ENOENT));
}

}  // namespace
}  // namespace kovra::helper
