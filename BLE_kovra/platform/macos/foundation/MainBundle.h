#pragma once

#include "BLE_kovra/platform/Bundle.h"

namespace kovra {

// The folder that the program was started from, with its information dictionary. A value that is no text, number or
// truth value counts as none.
class MainBundle : public Bundle {
  public:
    std::optional<InfoValue> infoDictionaryValue(std::string_view key) const override;
};

}  // namespace kovra
