#pragma once

#include <cstddef>
#include <optional>

#include "BLE_kovra/platform/View.h"

namespace kovra {

// Return whether a view takes all of the available width, even if it needs less. The first function considers all
// modifiers of the view, the second one only the innermost `modifierCount` of them.
bool takesWidth(const View& view);
bool takesWidth(const View& view, std::size_t modifierCount);

// Returns the width that remains inside all modifiers of a view, given the width around it. Returns nullopt if the
// width is not limited.
std::optional<double> widthInside(const View& view, std::optional<double> around);

}  // namespace kovra
