#pragma once

#include "BLE_kovra/platform/Bundle.h"

namespace kovra {

// The bundle information that is known at build time: the version from CMakeLists.txt.
class BuildBundle : public Bundle {
  public:
    std::optional<InfoValue> infoDictionaryValue(std::string_view key) const override;
};

}  // namespace kovra
