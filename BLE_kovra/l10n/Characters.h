#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kovra {

// The first `count` user-perceived characters of a UTF-8 text. A base letter and its combining marks count as one. A
// shorter text is returned whole.
std::string firstCharacters(std::string_view text, std::size_t count);

// The text with A to Z and the Kelvin sign (K) in lower case, which is all that language codes need.
std::string lowerCase(std::string_view text);

}  // namespace kovra
