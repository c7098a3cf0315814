#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>
#include <set>
#include <string>
#include <tuple>

#include "BLE_kovra/platform/linux/desktop/JsonPreferencesStore.h"
#include "tests/fakes/FakeLog.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {

// A preferences file in a temporary folder, with a program that uses it.
class PreferencesFixture : public testing::Test {
  protected:
    using Names = std::set<std::string>;

    JsonPreferencesStore& start() {
        log_.lines.clear();
        store_ = std::make_unique<JsonPreferencesStore>(path_, log_);
        return *store_;
    }
    JsonPreferencesStore& startWith(std::string_view text) {
        writeFile(path_, text);
        return start();
    }
    std::string text() const { return readFile(path_); }

    // Returns attributes of which any change of the file alters at least one.
    static auto traces(const std::string& path) {
        struct stat status {};
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
