#include "BLE_kovra/l10n/L10n.h"

#include "BLE_kovra/l10n/Characters.h"
#include "BLE_kovra/platform/Platform.h"

namespace kovra {

namespace {

constexpr std::array<std::string_view, 6> rawValues{"en", "ru", "uk", "fr", "de", "es"};

L10n::Lang chosenLanguage(const std::vector<std::string>& preferredLanguages) {
    if (preferredLanguages.empty()) return L10n::Lang::en;
    const std::string code = lowerCase(firstCharacters(preferredLanguages.front(), 2));
    return L10n::langFromRawValue(code).value_or(L10n::Lang::en);
}

}  // namespace

std::optional<L10n::Lang> L10n::langFromRawValue(std::string_view rawValue) {
    for (const Lang lang : allLanguages) {
        if (rawValue == L10n::rawValue(lang)) return lang;
    }
    return std::nullopt;
}

std::string_view L10n::rawValue(Lang lang) { return rawValues[static_cast<std::size_t>(lang)]; }

L10n::L10n(const std::vector<std::string>& preferredLanguages, const Catalogue& catalogue)
    : catalogue_(catalogue), current_(chosenLanguage(preferredLanguages)) {}

L10n::L10n(const std::vector<std::string>& preferredLanguages, Wording wording) : L10n(preferredLanguages) {
    if (wording == Wording::linuxDesktop) first_ = &linuxStrings();
}

std::string L10n::s(std::string_view key) const {
    const std::string name(key);
    const bool isInFirst = first_ != nullptr && first_->contains(name);
    const Catalogue& asked = isInFirst ? *first_ : catalogue_;
    const auto table = asked.find(name);
    if (table == asked.end()) return name;
    for (const Lang lang : {current_, Lang::en}) {
        if (const auto found = table->second.find(lang); found != table->second.end()) return found->second;
    }
    return name;
}

const L10n& L10n::shared() {
    static const L10n instance(Platform::current().locale.preferredLanguages(), Platform::current().wording);
    return instance;
}

}  // namespace kovra
