#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <memory>
#include <set>
#include <string>
#include <tuple>

#include "BLE_kovra/platform/linux/desktop/JsonPreferencesStore.h"
#include "tests/fakes/FakeLog.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {

// Preferences that are saved when set() returns, so that a test can look at the file.
class SavedPreferences : public JsonPreferencesStore {
  public:
    using JsonPreferencesStore::JsonPreferencesStore;
    void set(std::string_view key, const PreferenceValue& value) override {
        JsonPreferencesStore::set(key, value);
        EXPECT_TRUE(waitUntilSaved(std::chrono::minutes(1)));
    }
};

// A preferences file in a temporary folder, and the store that uses it.
class PreferencesFixture : public testing::Test {
  protected:
    using Names = std::set<std::string>;

    JsonPreferencesStore& start() {
        log_.lines.clear();
        store_ = std::make_unique<SavedPreferences>(path_, log_);
        return *store_;
    }
    JsonPreferencesStore& startWith(std::string_view text) {
        writeFile(path_, text);
        return start();
    }
    std::string text() const { return readFile(path_); }

    // Returns attributes of the file. Any change of the file changes at least one of them.
    static auto traces(const std::string& path) {
        struct stat status{};
        const int error = ::lstat(path.c_str(), &status);
        return std::tuple(error, status.st_ino, status.st_mode, status.st_size, status.st_mtim.tv_sec,
                          status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec);
    }

    TempFolder folder_{TempFolder::Where::memory};
    std::string path_ = folder_ / "preferences.json";
    FakeLog log_;
    std::unique_ptr<JsonPreferencesStore> store_;
};

}  // namespace kovra
