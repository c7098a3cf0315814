#include "BLE_kovra/platform/linux/desktop/JsonPreferencesStore.h"

#include <pwd.h>
#include <unistd.h>

#include <filesystem>
#include <limits>
#include <string>

#include "tests/platform/linux/desktop/JsonPreferencesStoreFixture.h"
#include "tests/support/Environment.h"

namespace kovra {
namespace {

namespace fs = std::filesystem;

using JsonPreferencesStoreTest = PreferencesFixture;

TEST_F(JsonPreferencesStoreTest, AreReadWithTheirTypes) {
    const auto& store = startWith(R"({"b": true, "n": 3, "f": 0.5, "t": "x", "a": ["a", 5, null, {}], "o": {"b": 1}})");
    EXPECT_EQ(store.object("b"), PreferenceValue(true));
    EXPECT_EQ(store.object("n"), PreferenceValue(3.0));
    EXPECT_EQ(store.object("f"), PreferenceValue(0.5));
    EXPECT_EQ(store.object("t"), PreferenceValue(std::string("x")));
    EXPECT_EQ(store.object("a"),
              PreferenceValue(PreferenceArray{std::string("a"), 5.0, OtherPreference(), OtherPreference()}));
    EXPECT_EQ(store.object("o"), PreferenceValue(OtherPreference()));
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(JsonPreferencesStoreTest, TreatNullAsNothingStored) {
    const auto& store = startWith(R"({"isEnabled": null})");
    EXPECT_EQ(store.object("isEnabled"), std::nullopt);
    EXPECT_FALSE(store.boolean("isEnabled"));
}

TEST_F(JsonPreferencesStoreTest, UseTheLastOfTwoValuesWithTheSameKey) {
    EXPECT_EQ(startWith(R"({"k": 1, "k": 2})").object("k"), PreferenceValue(2.0));
    EXPECT_EQ(startWith(R"({"k": 1, "k": null})").object("k"), std::nullopt);
    store_->set("k", 3.0);
    EXPECT_EQ(start().object("k"), PreferenceValue(3.0));
}

TEST_F(JsonPreferencesStoreTest, WriteNothingWhenTheyAreLoaded) {
    path_ = folder_ / "config/ble-kovra/preferences.json";
    start();
    EXPECT_TRUE(folder_.names().empty());
    EXPECT_TRUE(log_.lines.empty());

    path_ = folder_ / "preferences.json";
    writeFile(path_, "{\"a\": 1}");
    const auto before = traces(path_);
    start();
    store_.reset();
    EXPECT_EQ(traces(path_), before);
    EXPECT_EQ(folder_.names(), Names{"preferences.json"});
}

TEST_F(JsonPreferencesStoreTest, CreateTheirFoldersForTheUserOnly) {
    path_ = folder_ / "config/ble-kovra/preferences.json";
    start().set("isEnabled", false);
    EXPECT_EQ(text(), "{\n  \"isEnabled\": false\n}\n");
    EXPECT_EQ(fs::status(folder_ / "config").permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(folder_ / "config/ble-kovra").permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(path_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(folder_.names("config/ble-kovra"), Names{"preferences.json"});
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(JsonPreferencesStoreTest, ReplaceTheirOwnKeyAndKeepEveryOtherByte) {
    startWith(
        "  {\"z\" : 1.10,\t\"isEnabled\":true ,\"big\": 123456789012345678901234567890,\n"
        "  \"selectedDeviceIDs\": [\"a\", 5], \"n\\u0061me\": {\"isEnabled\": [1, {\"isEnabled\": \",}\"}]}, \"e\": "
        "1E2}")
        .set("isEnabled", false);
    EXPECT_EQ(text(),
              "  {\"z\" : 1.10,\t\"isEnabled\":false ,\"big\": 123456789012345678901234567890,\n"
              "  \"selectedDeviceIDs\": [\"a\", 5], \"n\\u0061me\": {\"isEnabled\": [1, {\"isEnabled\": \",}\"}]}, "
              "\"e\": 1E2}");
    store_->set("name", std::string("x"));
    store_->set("blockMode", std::string("always"));
    EXPECT_EQ(text(),
              "  {\"z\" : 1.10,\t\"isEnabled\":false ,\"big\": 123456789012345678901234567890,\n"
              "  \"selectedDeviceIDs\": [\"a\", 5], \"n\\u0061me\": \"x\", \"e\": 1E2,\n  \"blockMode\": \"always\"}");
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(JsonPreferencesStoreTest, MayBeginWithAByteOrderMark) {
    startWith("\xEF\xBB\xBF{\"a\": 1}").set("b", 2.0);
    EXPECT_EQ(text(), "\xEF\xBB\xBF{\"a\": 1,\n  \"b\": 2.0}");
    EXPECT_EQ(start().object("b"), PreferenceValue(2.0));
}

TEST_F(JsonPreferencesStoreTest, KeepWhatOtherProgramsStoredInTheMeantime) {
    startWith(R"({"a": 1, "b": 1})");
    writeFile(path_, R"({"a": 2, "b": 2, "c": 2})");
    store_->set("a", 3.0);
    EXPECT_EQ(store_->object("b"), PreferenceValue(1.0)) << "the value comes from memory";
    EXPECT_EQ(text(), R"({"a": 3.0, "b": 2, "c": 2})");
}

TEST_F(JsonPreferencesStoreTest, AreSavedOnceAndNotAgainWithTheNextKey) {
    start().set("a", 1.0);
    writeFile(path_, R"({"a": 2})");
    store_->set("b", 3.0);
    EXPECT_EQ(text(), "{\"a\": 2,\n  \"b\": 3.0}");
}

TEST_F(JsonPreferencesStoreTest, AreAllSavedAgainIfTheFileWasRemoved) {
    startWith(R"({"a": 1, "o": {"deep": [1]}})");
    fs::remove(path_);
    store_->set("b", 2.0);
    EXPECT_EQ(text(), "{\"a\": 1, \"o\": {\"deep\": [1]},\n  \"b\": 2.0}");
}

TEST_F(JsonPreferencesStoreTest, AreAllSavedAgainIfTheFileWasDamaged) {
    startWith(R"({"a": 1})");
    writeFile(path_, R"({"a": )");
    store_->set("b", 2.0);
    EXPECT_EQ(text(), "{\"a\": 1,\n  \"b\": 2.0}");
    EXPECT_EQ(readFile(path_ + ".damaged"), R"({"a": )");
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(JsonPreferencesStoreTest, FollowALinkToTheirFile) {
    fs::create_directory(folder_ / "elsewhere");
    writeFile(folder_ / "elsewhere/real.json", R"({"a": 1})");
    fs::create_symlink("elsewhere/real.json", folder_ / "second");
    fs::create_symlink(folder_ / "second", path_);
    EXPECT_EQ(start().object("a"), PreferenceValue(1.0));
    store_->set("b", 2.0);
    EXPECT_EQ(fs::read_symlink(path_), folder_ / "second");
    EXPECT_EQ(fs::read_symlink(folder_ / "second"), "elsewhere/real.json");
    EXPECT_EQ(readFile(folder_ / "elsewhere/real.json"), "{\"a\": 1,\n  \"b\": 2.0}");
    EXPECT_EQ(folder_.names("elsewhere"), Names{"real.json"});
    EXPECT_EQ(folder_.names(), (Names{"elsewhere", "preferences.json", "second"}));
}

TEST_F(JsonPreferencesStoreTest, CreateTheFileThatADanglingLinkPointsTo) {
    fs::create_symlink("elsewhere/deep/real.json", path_);
    start();
    EXPECT_EQ(folder_.names(), Names{"preferences.json"});
    store_->set("b", 2.0);
    EXPECT_TRUE(fs::is_symlink(path_));
    EXPECT_EQ(readFile(folder_ / "elsewhere/deep/real.json"), "{\n  \"b\": 2.0\n}\n");
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(JsonPreferencesStoreTest, StoreNoTextThatIsNotUtf8) {
    start().set("a\xFF", PreferenceArray{std::string("\xC3"), std::string("b\xED\xA0\x80")});
    EXPECT_EQ(start().object("a\xEF\xBF\xBD"),
              PreferenceValue(
                  PreferenceArray{std::string("\xEF\xBF\xBD"), std::string("b\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD")}));
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(JsonPreferencesStoreTest, StoreNoNumberThatJsonCannotHold) {
    for (const double number : {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        start().set("n", number);
        EXPECT_EQ(start().object("n"), std::nullopt);
        EXPECT_TRUE(log_.lines.empty());
    }
}

TEST_F(JsonPreferencesStoreTest, LeaveNoDescriptorBehind) {
    const auto open = [] { return std::distance(fs::directory_iterator("/dev/fd"), fs::directory_iterator()); };
    const auto before = open();
    start().set("a", 1.0);
    writeFile(path_, "{");
    store_->set("a", 2.0);
    fs::remove(path_);
    fs::create_directory(path_);
    store_->set("a", 3.0);
    start();
    EXPECT_EQ(open(), before);
}

class JsonPreferencesStorePathTest : public testing::Test {
  protected:
    JsonPreferencesStorePathTest() { environment_.unset({"XDG_CONFIG_HOME", "HOME"}); }
    Environment environment_;
};

TEST_F(JsonPreferencesStorePathTest, IsInTheConfigurationFolder) {
    environment_.set("XDG_CONFIG_HOME", "/somewhere/else");
    environment_.set("HOME", "/somewhere/user");
    EXPECT_EQ(standardPreferencesPath(), "/somewhere/else/ble-kovra/preferences.json");
}

TEST_F(JsonPreferencesStorePathTest, IsInTheHomeFolderIfNoConfigurationFolderIsSet) {
    environment_.set("HOME", "/somewhere/user");
    EXPECT_EQ(standardPreferencesPath(), "/somewhere/user/.config/ble-kovra/preferences.json");
    for (const char* notAbsolute : {"", "relative", "./config", "~/config"}) {
        environment_.set("XDG_CONFIG_HOME", notAbsolute);
        EXPECT_EQ(standardPreferencesPath(), "/somewhere/user/.config/ble-kovra/preferences.json");
    }
}

TEST_F(JsonPreferencesStorePathTest, IsInTheHomeFolderOfTheUserDatabaseIfNoneIsSet) {
    const passwd* user = ::getpwuid(::getuid());
    const std::string expected =
        user == nullptr ? "" : std::string(user->pw_dir) + "/.config/ble-kovra/preferences.json";
    EXPECT_EQ(standardPreferencesPath(), expected);
    environment_.set("HOME", "");
    EXPECT_EQ(standardPreferencesPath(), expected);
}

}  // namespace
}  // namespace kovra
