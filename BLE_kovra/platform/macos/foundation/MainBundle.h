#pragma once

#include "BLE_kovra/platform/Bundle.h"

namespace kovra {

// The bundle that the program was started from, with its information dictionary. Only texts, numbers and booleans count
// as values.
class MainBundle : public Bundle {
  public:
    std::optional<InfoValue> infoDictionaryValue(std::string_view key) const override;
};

}  // namespace kovra
