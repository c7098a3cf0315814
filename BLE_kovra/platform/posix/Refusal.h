#pragma once

#include <cstring>

#include "BLE_kovra/platform/Outcome.h"

namespace kovra {

// Returns a failure with the system's message for this error number.
inline Outcome refusal(int error) { return Outcome::failure(std::strerror(error)); }

}  // namespace kovra
