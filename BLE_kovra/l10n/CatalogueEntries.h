#pragma once

#include <cstdlib>
#include <initializer_list>
#include <string>
#include <utility>

#include "BLE_kovra/l10n/L10n.h"

namespace kovra {

// Returns the texts of one key by language. `inOrder` has one text for each language, in the order of
// L10n::allLanguages. Aborts if the number of texts is different.
inline L10n::Table texts(std::initializer_list<std::string> inOrder) {
    if (inOrder.size() != L10n::allLanguages.size()) std::abort();
    L10n::Table table;
    table.reserve(inOrder.size());
    auto lang = L10n::allLanguages.begin();
    for (const std::string& text : inOrder) table.emplace(*lang++, text);
    return table;
}

// Returns the entries by key. Aborts if a key occurs twice, which is a mistake in the catalogue.
inline L10n::Catalogue catalogue(std::initializer_list<std::pair<const char*, L10n::Table>> entries) {
    L10n::Catalogue result;
    result.reserve(entries.size());
    for (const auto& [key, table] : entries) {
        if (!result.emplace(key, table).second) std::abort();
    }
    return result;
}

}  // namespace kovra
