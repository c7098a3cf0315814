#pragma once

#include <string>
#include <string_view>

namespace kovra::control {

// Returns the text with question marks in place of characters that control a terminal. Names of devices and arguments
// come from outside.
std::string printable(std::string_view text);

}  // namespace kovra::control
