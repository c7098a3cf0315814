#include <gtest/gtest.h>
#include <libintl.h>

#include <clocale>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>

#include "BLE_kovra/platform/linux/desktop/JsonPreferencesStore.h"
#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "tests/fakes/FakeLog.h"
#include "tests/support/Environment.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

// Returns a message catalog with one translated text, in the binary format of gettext.
std::string catalogOf(const std::string& original, const std::string& translation) {
    const auto size = [](const std::string& text) { return static_cast<std::uint32_t>(text.size()); };
    constexpr std::uint32_t originals = 28, translations = 36, texts = 44;
    const std::uint32_t head[] = {0x950412DE,
                                  0,
                                  1,
                                  originals,
                                  translations,
                                  0,
                                  texts,
                                  size(original),
                                  texts,
                                  size(translation),
                                  texts + size(original) + 1};
    std::string catalog(reinterpret_cast<const char*>(head), sizeof head);
    return catalog + original + '\0' + translation + '\0';
}

// A system with Russian messages, one of which has a recognizable translation.
class RussianSystem {
  public:
    RussianSystem() {
        namespace fs = std::filesystem;
        environment_.unset({"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LC_CTYPE"});
        environment_.set("LOCPATH", KOVRA_TEST_LOCALES);
        environment_.set("LANG", "ru_RU.UTF-8");
        fs::create_directories(folder_ / "ru/LC_MESSAGES");
        writeFile(folder_ / "ru/LC_MESSAGES/libc.mo", catalogOf("Is a directory", "это каталог"));
        ::bindtextdomain("libc", folder_.path().c_str());
        EXPECT_NE(std::setlocale(LC_ALL, ""), nullptr);
    }
    RussianSystem(const RussianSystem&) = delete;
    RussianSystem& operator=(const RussianSystem&) = delete;
    ~RussianSystem() {
        std::setlocale(LC_ALL, "C");
        ::bindtextdomain("libc", before_.c_str());
    }

  private:
    const std::string before_ = ::bindtextdomain("libc", nullptr);
    TempFolder folder_;
    Environment environment_;
};

TEST(JsonPreferencesStoreReasonTest, IsInTheUsersLanguageForTheFlag) {
    const RussianSystem system;
    const TempFolder folder;
    EXPECT_EQ(PosixFileSystem().writeWholeFile(folder.path(), "on").reason(), "это каталог");
}

TEST(JsonPreferencesStoreReasonTest, IsInTheUsersLanguageForThePreferences) {
    const RussianSystem system;
    const TempFolder folder;
    FakeLog log;
    JsonPreferencesStore(folder.path(), log).set("isEnabled", true);
    const std::string tail = " (" + folder.path().string() + "): это каталог";
    EXPECT_EQ(log.lines, (std::vector<std::string>{"ble-kovra: не удалось прочитать настройки" + tail,
                                                   "ble-kovra: не удалось сохранить настройки" + tail}));
}

}  // namespace
}  // namespace kovra
