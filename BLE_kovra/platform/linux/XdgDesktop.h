#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// The parts of a list that colons separate.
std::vector<std::string> splitAtColons(std::string_view list);

// $XDG_CURRENT_DESKTOP: the names that the user's desktop goes by, the most particular first.
std::vector<std::string> desktopNames();

// Whether one of the names is among the others.
bool anyOf(const std::vector<std::string>& some, const std::vector<std::string>& others);

}  // namespace kovra
