#pragma once

#include "BLE_kovra/platform/Outcome.h"

namespace kovra {

// Whether the desktop starts the program when the user logs in.
enum class LoginStatus { notRegistered = 0, enabled = 1, requiresApproval = 2, notFound = 3 };

class LoginService {
  public:
    virtual ~LoginService() = default;
    // Reads the status from the system at each call.
    virtual LoginStatus status() const = 0;

    // After registerApplication() or unregisterApplication(), read the status again to see the result.
    virtual Outcome registerApplication() = 0;
    virtual Outcome unregisterApplication() = 0;
};

}  // namespace kovra
