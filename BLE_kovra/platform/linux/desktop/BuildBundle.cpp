#include "BLE_kovra/platform/linux/desktop/BuildBundle.h"

#include <string>

namespace kovra {

std::optional<InfoValue> BuildBundle::infoDictionaryValue(std::string_view key) const {
    if (key == "CFBundleShortVersionString") return std::string(KOVRA_VERSION);
    return std::nullopt;
}

}  // namespace kovra
