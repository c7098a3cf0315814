#pragma once

#include "BLE_kovra/platform/Locale.h"
#include "BLE_kovra/platform/macos/foundation/CFHandle.h"

namespace kovra {

// The languages from the user's system settings, and the collation of the user's region at the time of construction.
class CFLocale : public Locale {
  public:
    CFLocale() : locale_(CFLocaleCopyCurrent()) {}

    std::vector<std::string> preferredLanguages() const override;
    // Returns the name itself: the system compares names and provides no sort keys.
    std::string sortKey(std::string_view name) const override { return std::string(name); }
    bool isAscending(const std::string& firstKey, const std::string& secondKey) const override;

  private:
    CFHandle<CFLocaleRef> locale_;
};

}  // namespace kovra
