#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kovra {

// Returns "mailto:" and the address. Null if the address is empty or contains a character that is invalid in a URL (RFC
// 3986).
std::optional<std::string> mailLink(std::string_view address);

}  // namespace kovra
