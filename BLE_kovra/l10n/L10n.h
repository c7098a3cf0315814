#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kovra {

// Every text that the user sees, by key, in one language that is chosen once and stays.
//
// Only the user's first preferred language counts, and of it only the language, not region or script: pt-BR before
// ru-RU gives English. A text missing in the chosen language is shown in English; a key that is missing altogether is
// shown itself.
class L10n {
  public:
    enum class Lang { en, ru, uk, fr, de, es };
    static constexpr std::array allLanguages{Lang::en, Lang::ru, Lang::uk, Lang::fr, Lang::de, Lang::es};

    using Table = std::unordered_map<Lang, std::string>;
    using Catalogue = std::unordered_map<std::string, Table>;

    // "en", "ru", "uk", "fr", "de" or "es"; any other text, "EN" too, is no language.
    static std::optional<Lang> langFromRawValue(std::string_view rawValue);
    static std::string_view rawValue(Lang lang);

    // The shipped texts, made once.
    static const Catalogue& strings();

    // The catalogue is not copied; it has to outlive the lookups.
    explicit L10n(const std::vector<std::string>& preferredLanguages, const Catalogue& catalogue = strings());

    Lang current() const { return current_; }
    std::string text(std::string_view key) const;

    static const L10n& shared();
    static std::string s(std::string_view key) { return shared().text(key); }

  private:
    const Catalogue& catalogue_;
    Lang current_;
};

}  // namespace kovra
