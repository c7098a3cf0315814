#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kovra {

// Returns whether brackets and braces are nested deeper than `limit` in the text. The text need not be valid JSON.
// Brackets and braces in quotes do not count.
bool isNestedDeeperThan(std::size_t limit, std::string_view text);

// Returns the JSON object with the member `key` set to `value`. Every other byte stays the same. A new member is
// appended. If the member occurs twice, the last one is replaced, because JSON parsers use the last one. `object` must
// be a valid JSON object; `key` (with its quotes) and `value` must be valid JSON.
std::string withMember(std::string_view object, std::string_view key, std::string_view value);

}  // namespace kovra
