#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/FileSystem.h"

namespace kovra {

// Files in memory. Every write is recorded, even if it fails.
class FakeFileSystem : public FileSystem {
  public:
    struct Write {
        std::string path;
        std::string text;
        bool succeeded;
    };

    Outcome writeWholeFile(const std::string& path, std::string_view text) override {
        const std::optional<std::string> reason = reasonToFail();
        writes.push_back({path, std::string(text), !reason});
        if (reason) return Outcome::failure(*reason);
        contents[path] = text;
        return Outcome::success();
    }

    bool fileExists(const std::string& path) const override { return contents.contains(path); }

    void failNext(std::string reason) { failures_.push_back(std::move(reason)); }
    void failAlways(std::optional<std::string> reason) { always_ = std::move(reason); }

    std::map<std::string, std::string> contents;
    std::vector<Write> writes;

  private:
    std::optional<std::string> reasonToFail() {
        if (failures_.empty()) return always_;
        std::string reason = failures_.front();
        failures_.erase(failures_.begin());
        return reason;
    }

    std::vector<std::string> failures_;
    std::optional<std::string> always_;
};

}  // namespace kovra
