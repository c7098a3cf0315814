#pragma once

#include "BLE_kovra/platform/Bundle.h"

namespace kovra {

// What the build knows of the program: its version, which CMakeLists.txt says for all.
class BuildBundle : public Bundle {
  public:
    std::optional<InfoValue> infoDictionaryValue(std::string_view key) const override;
};

}  // namespace kovra
