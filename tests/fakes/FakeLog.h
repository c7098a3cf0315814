#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/SystemLog.h"

namespace kovra {

class FakeLog : public SystemLog {
  public:
    void log(std::string_view line) override { lines.emplace_back(line); }

    std::vector<std::string> lines;
};

}  // namespace kovra
