#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/Bundle.h"
#include "BLE_kovra/platform/Workspace.h"

namespace kovra {

class FakeWorkspace : public Workspace {
  public:
    void open(const std::string& url) override { opened.push_back(url); }

    std::vector<std::string> opened;
};

class FakeBundle : public Bundle {
  public:
    std::optional<InfoValue> infoDictionaryValue(std::string_view key) const override {
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }

    std::map<std::string, InfoValue, std::less<>> values;
};

}  // namespace kovra
