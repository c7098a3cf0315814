#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "BLE_kovra/platform/Locale.h"

namespace kovra {

// The texts that the user sees, in one language. The constructor chooses the language.
//
// Only the first preferred language counts, and only its first two characters, in upper or lower case. If they name
// none of the six languages, the texts are English, even if the second preferred language is one of the six.
//
// Every text that the user sees comes from s(), by its key. If it is missing in the chosen language, s() returns the
// English text. If that is missing, too, s() returns the key itself.
//
// On the Linux desktop a second catalogue is asked first. It has the texts that differ there.
class L10n {
  public:
    enum class Lang { en, ru, uk, fr, de, es };
    static constexpr std::array allLanguages{Lang::en, Lang::ru, Lang::uk, Lang::fr, Lang::de, Lang::es};

    using Table = std::unordered_map<Lang, std::string>;
    using Catalogue = std::unordered_map<std::string, Table>;

    // Returns nullopt for any text but "en", "ru", "uk", "fr", "de" and "es", in lower case.
    static std::optional<Lang> langFromRawValue(std::string_view rawValue);
    static std::string_view rawValue(Lang lang);

    // Returns the program's own catalogue.
    static const Catalogue& strings();
    // Returns the texts that are asked first on the Linux desktop.
    static const Catalogue& linuxStrings();

    // The catalogue is not copied and must outlive this object.
    explicit L10n(const std::vector<std::string>& preferredLanguages, const Catalogue& catalogue = strings());
    L10n(const std::vector<std::string>& preferredLanguages, Wording wording);

    Lang current() const { return current_; }
    std::string s(std::string_view key) const;

    // The texts in the language of this process's user, which is chosen once.
    static const L10n& shared();

  private:
    const Catalogue* first_ = nullptr;  // asked before catalogue_
    const Catalogue& catalogue_;
    Lang current_;
};

}  // namespace kovra
