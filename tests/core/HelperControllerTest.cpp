#include "BLE_kovra/core/HelperController.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/fakes/FakeFileSystem.h"
#include "tests/fakes/FakeLog.h"

namespace kovra {
namespace {

struct HelperRig {
    FakeFileSystem files;
    FakeLog log;
    HelperController helper{files, log};

    std::vector<std::string> written() const {
        std::vector<std::string> texts;
        for (const auto& write : files.writes) texts.push_back(write.text);
        return texts;
    }
};

using Texts = std::vector<std::string>;

TEST(HelperControllerTest, WritesTheFlagFile) {
    HelperRig rig;
    rig.helper.set(true);
    ASSERT_EQ(rig.files.writes.size(), 1U);
    EXPECT_EQ(rig.files.writes[0].path, "/Library/Application Support/ble-kovra/state");
    EXPECT_EQ(rig.files.writes[0].text, "on");
}

TEST(HelperControllerTest, WritesOnlyWhenTheAnswerChanges) {
    HelperRig rig;
    rig.helper.set(true);
    rig.helper.set(true);
    rig.helper.set(false);
    rig.helper.set(false);
    rig.helper.set(true);
    EXPECT_EQ(rig.written(), (Texts{"on", "off", "on"}));
}

TEST(HelperControllerTest, AlwaysWritesAtItsFirstCall) {
    HelperRig rig;
    rig.files.contents[HelperController::stateFile] = "off";
    rig.helper.set(false);
    EXPECT_EQ(rig.written(), Texts{"off"});
}

TEST(HelperControllerTest, RetriesAfterAFailureEvenWithTheSameAnswer) {
    HelperRig rig;
    rig.files.failNext("No space left on device");
    rig.files.failNext("No space left on device");
    rig.helper.set(true);
    rig.helper.set(true);
    rig.helper.set(true);
    rig.helper.set(true);
    EXPECT_EQ(rig.written(), (Texts{"on", "on", "on"}));
    EXPECT_EQ(rig.log.lines.size(), 2U);
}

TEST(HelperControllerTest, WritesAgainAfterAFailureEvenWhatItHadWrittenBefore) {
    HelperRig rig;
    rig.helper.set(false);
    rig.files.failNext("No space left on device");
    rig.helper.set(true);
    rig.helper.set(false);
    rig.helper.set(false);
    EXPECT_EQ(rig.written(), (Texts{"off", "on", "off"}));
}

TEST(HelperControllerTest, LogsAFailureInOneLineWithTheSystemsReason) {
    HelperRig rig;
    rig.files.failNext("Нет такого файла или каталога");
    rig.files.failNext("100% full: %s %n");
    rig.helper.set(true);
    rig.helper.set(false);
    EXPECT_EQ(rig.log.lines, (Texts{"ble-kovra: не удалось записать флаг (on): Нет такого файла или каталога",
                                    "ble-kovra: не удалось записать флаг (off): 100% full: %s %n"}));
}

TEST(HelperControllerTest, RemembersTheLastSuccessfulWrite) {
    HelperRig rig;
    EXPECT_EQ(rig.helper.lastWritten(), std::nullopt);
    rig.helper.set(false);
    rig.files.failNext("Permission denied");
    rig.helper.set(true);
    EXPECT_EQ(rig.helper.lastWritten(), "off");
}

}  // namespace
}  // namespace kovra
