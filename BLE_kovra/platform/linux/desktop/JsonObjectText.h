#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kovra {

// Whether brackets stand in brackets deeper than this. For any text, JSON or not; what stands in quotes does not count.
bool isNestedDeeperThan(std::size_t limit, std::string_view text);

// The text of a JSON object in which this member has this value; all else stays byte for byte as it is. The member
// comes last if it is new; if it is there twice, the last one counts, as it does for readers of JSON. `object` must be
// a valid JSON object, `key` (in quotes) and `value` valid JSON.
std::string withMember(std::string_view object, std::string_view key, std::string_view value);

}  // namespace kovra
