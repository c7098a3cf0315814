#pragma once

namespace kovra {

// Whether the desktop starts the program when the user logs in.
enum class LoginStatus { notRegistered = 0, enabled = 1, requiresApproval = 2, notFound = 3 };

class LoginService {
  public:
    virtual ~LoginService() = default;
    // Read afresh at every call.
    virtual LoginStatus status() const = 0;
};

}  // namespace kovra
