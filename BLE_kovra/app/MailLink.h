#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kovra {

// "mailto:" and the address. Null if that makes no URL: if a character in it may not stand in one (RFC 3986).
std::optional<std::string> mailLink(std::string_view address);

}  // namespace kovra
