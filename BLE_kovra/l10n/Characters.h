#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kovra {

// Returns the first `count` user-perceived characters of a UTF-8 text. A base letter and its combining marks count as
// one. A shorter text is returned whole.
std::string firstCharacters(std::string_view text, std::size_t count);

// Returns the text with A to Z and the Kelvin sign (U+212A) in lower case; the latter becomes k. Other characters are
// unchanged, because a language code consists of the letters a to z.
std::string lowerCase(std::string_view text);

}  // namespace kovra
