#pragma once

#include <string_view>

namespace kovra {

// The system log. Lines are logged literally, not as format strings.
class SystemLog {
  public:
    virtual ~SystemLog() = default;
    virtual void log(std::string_view line) = 0;
};

}  // namespace kovra
