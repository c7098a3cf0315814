#pragma once

#include "BLE_kovra/platform/Outcome.h"

namespace kovra {

// Whether the desktop starts the program when the user logs in.
enum class LoginStatus { notRegistered = 0, enabled = 1, requiresApproval = 2, notFound = 3 };

class LoginService {
  public:
    virtual ~LoginService() = default;
    // Read afresh at every call.
    virtual LoginStatus status() const = 0;

    // What comes of these two is seen by reading the status again.
    virtual Outcome registerApplication() = 0;
    virtual Outcome unregisterApplication() = 0;
};

}  // namespace kovra
