#pragma once

#include <cstring>

#include "BLE_kovra/platform/Outcome.h"

namespace kovra {

// What the system refused, for the reason that this error number stands for.
inline Outcome refusal(int error) { return Outcome::failure(std::strerror(error)); }

}  // namespace kovra
