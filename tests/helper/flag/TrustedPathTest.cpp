#include "helper/flag/TrustedPath.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "tests/helper/AsRoot.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {
namespace {

TEST(TrustedPathTest, TellsRootWhichUserTheHelperMustRunAs) {
    runAsRoot([] {
        const FlagRig rig;
        ASSERT_EQ(::chown(rig.path().c_str(), alice, alice), 0);
        EXPECT_EQ(openTrustedPath(rig.root(), folderPath, 0).refusal,
                  rig.path() + ": it belongs to user 61001: start the helper as that user, not as root");
        EXPECT_EQ(openTrustedPath(rig.root(), folderPath, bob).refusal, rig.path() + ": it belongs to user 61001");
        EXPECT_EQ(openTrustedPath(rig.root(), folderPath, alice).refusal, "");
    });
}

TEST(TrustedPathTest, AdvisesNothingIfAFolderAboveBelongsToAnotherUser) {
    runAsRoot([] {
        const FlagRig rig;
        const std::string above = rig.root() + "/Library";
        ASSERT_EQ(::chown(above.c_str(), alice, alice), 0);
        EXPECT_EQ(openTrustedPath(rig.root(), folderPath, 0).refusal, above + ": it belongs to user 61001");
    });
}

}  // namespace
}  // namespace kovra::helper
