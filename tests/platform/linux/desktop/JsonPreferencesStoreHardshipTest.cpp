// Tests of the preferences when the system returns errors. No value may be lost and nothing changed unnecessarily. Each
// failure causes one log line.

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/desktop/SmallTextFile.h"
#include "tests/platform/linux/desktop/JsonPreferencesStoreFixture.h"
#include "tests/support/posix/FileSizeLimit.h"
#include "tests/support/posix/OrdinaryUser.h"

namespace kovra {
namespace {

namespace fs = std::filesystem;

class JsonPreferencesStoreHardshipTest : public PreferencesFixture {
  protected:
    using Lines = std::vector<std::string>;

    std::string cannotRead(int error) const {
        return "ble-kovra: не удалось прочитать настройки (" + path_ + "): " + std::strerror(error);
    }
    std::string cannotSave(int error) const {
        return "ble-kovra: не удалось сохранить настройки (" + path_ + "): " + std::strerror(error);
    }
    // Loads the file, and tries twice to save it, without success. The file at the path must stay unchanged.
    void expectLeftAlone(int error) {
        const auto before = traces(path_);
        start();
        EXPECT_EQ(store_->object("a"), std::nullopt);
        EXPECT_EQ(log_.lines, Lines{cannotRead(error)});
        store_->set("a", 1.0);
        store_->set("b", 2.0);
        EXPECT_EQ(log_.lines, (Lines{cannotRead(error), cannotSave(error), cannotSave(error)}));
        EXPECT_EQ(store_->object("a"), PreferenceValue(1.0));
        EXPECT_EQ(traces(path_), before);
        EXPECT_EQ(folder_.names(), Names{"preferences.json"});
    }
};

TEST_F(JsonPreferencesStoreHardshipTest, AFolderInPlaceOfTheFileIsLeftAlone) {
    fs::create_directory(path_);
    expectLeftAlone(EISDIR);
}

TEST_F(JsonPreferencesStoreHardshipTest, APipeInPlaceOfTheFileIsLeftAlone) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    expectLeftAlone(EINVAL);
}

TEST_F(JsonPreferencesStoreHardshipTest, ALinkToItselfIsLeftAlone) {
    fs::create_symlink(path_, path_);
    expectLeftAlone(ELOOP);
}

TEST_F(JsonPreferencesStoreHardshipTest, AFileWithoutTheRightToReadIsLeftAlone) {
    writeFile(path_, R"({"a": 7})");
    OrdinaryUser::give(folder_.path());
    OrdinaryUser::give(path_);
    const OrdinaryUser user;
    {
        const Rights none(path_, 0);
        expectLeftAlone(EACCES);
    }
    EXPECT_EQ(text(), R"({"a": 7})");
    // Once the file is readable, the next save also includes the value that could not be saved.
    store_->set("c", 3.0);
    EXPECT_EQ(text(), "{\"a\": 1.0,\n  \"b\": 2.0,\n  \"c\": 3.0}");
}

TEST_F(JsonPreferencesStoreHardshipTest, AFileTooLargeIsLeftAlone) {
    const std::string large = "{\"a\": \"" + std::string(10 << 20, 'x') + "\"}";
    writeFile(path_, large);
    expectLeftAlone(EFBIG);
    EXPECT_EQ(text(), large);
}

TEST_F(JsonPreferencesStoreHardshipTest, AFileOfTheLargestSizeIsRead) {
    std::string large = "{\"b\": \"\"}";
    large.insert(large.size() - 2, SmallTextFile::largestSize - large.size(), 'x');
    EXPECT_NE(startWith(large).object("b"), std::nullopt);
    EXPECT_TRUE(log_.lines.empty());
    store_->set("c", 1.0);
    EXPECT_EQ(log_.lines, Lines{cannotSave(EFBIG)}) << "nothing is written that could not be read again";
    EXPECT_EQ(text(), large);
}

TEST_F(JsonPreferencesStoreHardshipTest, AFileInAFolderWithoutRightsIsLeftAlone) {
    fs::create_directory(folder_ / "closed");
    path_ = folder_ / "closed/preferences.json";
    writeFile(path_, "{}");
    OrdinaryUser::give(folder_.path());
    OrdinaryUser::give(folder_ / "closed");
    const OrdinaryUser user;
    const Rights none(folder_ / "closed", 0);
    start().set("a", 1.0);
    EXPECT_EQ(log_.lines, (Lines{cannotRead(EACCES), cannotSave(EACCES)}));
}

TEST_F(JsonPreferencesStoreHardshipTest, AFileInAReadOnlyFolderStaysAndTheValueIsSavedLater) {
    writeFile(path_, R"({"x": 0})");
    OrdinaryUser::give(folder_.path());
    OrdinaryUser::give(path_);
    const OrdinaryUser user;
    {
        const Rights readOnly(folder_.path(), 0500);
        const auto before = traces(path_);
        start().set("a", 1.0);
        store_->set("b", 2.0);
        store_->set("a", 3.0);
        EXPECT_EQ(log_.lines, (Lines{cannotSave(EACCES), cannotSave(EACCES), cannotSave(EACCES)}));
        EXPECT_EQ(traces(path_), before);
    }
    store_->set("c", 4.0);
    EXPECT_EQ(log_.lines.size(), 3U);
    const auto& again = start();
    EXPECT_EQ(again.object("a"), PreferenceValue(3.0));
    EXPECT_EQ(again.object("b"), PreferenceValue(2.0));
    EXPECT_EQ(again.object("c"), PreferenceValue(4.0));
    EXPECT_EQ(again.object("x"), PreferenceValue(0.0));
}

TEST_F(JsonPreferencesStoreHardshipTest, AMissingFolderThatCannotBeCreatedCausesOneLinePerSave) {
    writeFile(folder_ / "file", "");
    path_ = folder_ / "file/ble-kovra/preferences.json";
    start().set("a", 1.0);
    EXPECT_EQ(log_.lines, (Lines{cannotRead(ENOTDIR), cannotSave(ENOTDIR)}));

    path_ = folder_ / "deep/ble-kovra/preferences.json";
    OrdinaryUser::give(folder_.path());
    const OrdinaryUser user;
    const Rights readOnly(folder_.path(), 0500);
    start().set("a", 1.0);
    EXPECT_EQ(log_.lines, Lines{cannotSave(EACCES)});
}

TEST_F(JsonPreferencesStoreHardshipTest, AUserWithoutAHomeHasNoPreferences) {
    path_.clear();
    start().set("a", 1.0);
    EXPECT_EQ(log_.lines, Lines{cannotSave(ENOENT)});
}

TEST_F(JsonPreferencesStoreHardshipTest, AFullDiskLeavesTheFileAsItWas) {
    const std::string stored = R"({"selectedDeviceIDs": ["a#1:2"], "other": "kept"})";
    for (rlim_t room = 0; room < stored.size(); room += 7) {
        startWith(stored);
        const auto before = traces(path_);
        {
            const FileSizeLimit limit(room);
            store_->set("isEnabled", false);
        }
        EXPECT_EQ(log_.lines, Lines{cannotSave(EFBIG)});
        EXPECT_EQ(traces(path_), before);
        EXPECT_EQ(folder_.names(), Names{"preferences.json"}) << "a temporary was left behind";
    }
    store_->set("blockMode", std::string("always"));
    const auto& again = start();
    EXPECT_EQ(again.object("isEnabled"), PreferenceValue(false));
    EXPECT_EQ(again.object("blockMode"), PreferenceValue(std::string("always")));
    EXPECT_EQ(again.object("selectedDeviceIDs"), PreferenceValue(PreferenceArray{std::string("a#1:2")}));
}

TEST_F(JsonPreferencesStoreHardshipTest, AFullDiskLeavesDamagedPreferencesInPlace) {
    startWith("{torn");
    {
        const FileSizeLimit limit(1);
        store_->set("a", 1.0);
    }
    EXPECT_EQ(text(), "{torn");
    EXPECT_EQ(folder_.names(), Names{"preferences.json"});
    store_->set("b", 2.0);
    EXPECT_EQ(text(), "{\n  \"a\": 1.0,\n  \"b\": 2.0\n}\n");
    EXPECT_EQ(readFile(path_ + ".damaged"), "{torn");
}

TEST_F(JsonPreferencesStoreHardshipTest, ThePathInALineIsReadable) {
    path_ = folder_ / "\xFF";
    writeFile(path_, "{");
    start();
    EXPECT_EQ(log_.lines,
              Lines{"ble-kovra: файл настроек повреждён (" + (folder_ / "\xEF\xBF\xBD") + "): ошибка JSON, байт 2"});
}

}  // namespace
}  // namespace kovra
