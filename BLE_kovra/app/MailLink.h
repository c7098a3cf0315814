#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kovra {

// Returns "mailto:" followed by the address. Returns nullopt if the address is empty or has a character that no URL may
// contain (RFC 3986).
std::optional<std::string> mailLink(std::string_view address);

}  // namespace kovra
