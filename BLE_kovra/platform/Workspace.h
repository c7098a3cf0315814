#pragma once

#include <string>

namespace kovra {

// The desktop with its other programs.
class Workspace {
  public:
    virtual ~Workspace() = default;
    // Hands the URL to the program that the user has for it. Returns at once; what comes of it is not told.
    virtual void open(const std::string& url) = 0;
};

}  // namespace kovra
