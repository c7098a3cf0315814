#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kovra {

// The first `count` characters of a UTF-8 text as a reader sees them: a base letter and the marks combined with it
// are one. A shorter text is returned whole.
std::string firstCharacters(std::string_view text, std::size_t count);

// The text in lower case as far as language codes need it: the letters A to Z, and the Kelvin sign, whose lower case is
// k.
std::string lowerCase(std::string_view text);

}  // namespace kovra
