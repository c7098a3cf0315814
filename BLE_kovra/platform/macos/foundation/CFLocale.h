#pragma once

#include "BLE_kovra/platform/Locale.h"
#include "BLE_kovra/platform/macos/foundation/CFHandle.h"

namespace kovra {

// The user's languages as the system settings list them, and the order of names of the user's region at the moment of
// construction.
class CFLocale : public Locale {
  public:
    CFLocale() : locale_(CFLocaleCopyCurrent()) {}

    std::vector<std::string> preferredLanguages() const override;
    // The name itself: the system has no keys to offer, it compares names.
    std::string sortKey(std::string_view name) const override { return std::string(name); }
    bool isAscending(const std::string& firstKey, const std::string& secondKey) const override;

  private:
    CFHandle<CFLocaleRef> locale_;
};

}  // namespace kovra
