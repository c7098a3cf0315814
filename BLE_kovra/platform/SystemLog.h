#pragma once

#include <string_view>

namespace kovra {

// The system's log. A line arrives as it is given: it is no format and nothing in it is replaced.
class SystemLog {
  public:
    virtual ~SystemLog() = default;
    virtual void log(std::string_view line) = 0;
};

}  // namespace kovra
