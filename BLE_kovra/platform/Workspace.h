#pragma once

#include <string>

namespace kovra {

// A service that opens URLs with other programs.
class Workspace {
  public:
    virtual ~Workspace() = default;
    // Opens the URL with the user's default program. Returns at once and reports no errors.
    virtual void open(const std::string& url) = 0;
};

}  // namespace kovra
