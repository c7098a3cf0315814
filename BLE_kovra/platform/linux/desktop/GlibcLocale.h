#pragma once

#include <locale.h>

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "BLE_kovra/platform/Locale.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

// The user's language and sort order, taken from the environment of the process.
//
// The languages are read from LANGUAGE (unless the locale is C), LC_ALL, LC_MESSAGES and LANG, in gettext's order of
// precedence. An empty variable counts as unset. The C library sorts names by the rules of the collation locale
// (LC_ALL, LC_COLLATE or LANG), always in that locale's UTF-8 variant. If this variant is not installed, names are
// sorted by code point. The constructor chooses the sort order. Variables and names may contain any bytes.
class GlibcLocale : public Locale {
  public:
    GlibcLocale();

    std::vector<std::string> preferredLanguages() const override;
    // Names that differ only in letter case have equal keys.
    std::string sortKey(std::string_view name) const override;
    bool isAscending(const std::string& firstKey, const std::string& secondKey) const override;

  private:
    Handle<std::remove_pointer_t<locale_t>, freelocale> locale_;
};

}  // namespace kovra
