#include "BLE_kovra/platform/macos/application/MainMenu.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BLE_kovra/platform/macos/foundation/FoundationString.h"

namespace kovra {
namespace {

TEST(MainMenuTest, HasTheKeysOfEveryApplication) {
    NSObject* target = [[NSObject alloc] init];
    std::vector<std::string> keys;
    for (NSMenuItem* holder in [mainMenu(target, @selector(description)) itemArray]) {
        for (NSMenuItem* item in [[holder submenu] itemArray]) {
            EXPECT_EQ([item keyEquivalentModifierMask], static_cast<NSUInteger>(NSCommandKeyMask));
            keys.push_back(utf8String([item keyEquivalent]) + " " + utf8String(NSStringFromSelector([item action])) +
                           ([item target] == target ? " of the target" : ""));
        }
    }
    EXPECT_EQ(keys, (std::vector<std::string>{", description of the target",
                                              "q terminate:", "m performMiniaturize:", "w performClose:"}));
}

}  // namespace
}  // namespace kovra
