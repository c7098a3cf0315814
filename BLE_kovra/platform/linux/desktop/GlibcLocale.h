#pragma once

#include <locale.h>

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "BLE_kovra/platform/Locale.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

// The user's language and order of names as the environment of the process names them.
//
// Languages come from LANGUAGE (unless the locale is the C one), LC_ALL, LC_MESSAGES and LANG, in gettext's order; an
// empty variable counts as unset. Names are ordered as the C library orders texts in the user's LC_COLLATE, here always
// in its UTF-8 form; where that locale is not installed, by the numbers of their characters. The order is that of the
// moment of construction. Variables and names may hold any bytes.
class GlibcLocale : public Locale {
  public:
    GlibcLocale();

    std::vector<std::string> preferredLanguages() const override;
    // Equal for names that differ in nothing but the case of their letters.
    std::string sortKey(std::string_view name) const override;
    bool isAscending(const std::string& firstKey, const std::string& secondKey) const override;

  private:
    Handle<std::remove_pointer_t<locale_t>, freelocale> locale_;
};

}  // namespace kovra
