#pragma once

#include <cstddef>
#include <optional>

#include "BLE_kovra/platform/View.h"

namespace kovra {

// Whether a view takes what width there is, beyond what it needs: with all its modifiers, or with this many of them,
// the innermost first.
bool takesWidth(const View& view);
bool takesWidth(const View& view, std::size_t modifierCount);

// The width that is left inside all its modifiers, of what there is around them. Without a number: as it comes.
std::optional<double> widthInside(const View& view, std::optional<double> around);

}  // namespace kovra
