#pragma once

#include <list>
#include <string>
#include <string_view>

#include "helper/RateLimit.h"

namespace kovra::helper {

// Keeps lines from filling the log again and again. It rejects a line that equals the last accepted one. Of lines that
// alternate with others it accepts each three times, and then once per hour. It remembers the last 16 different lines.
class RepeatFilter {
  public:
    bool accepts(std::string_view line, RateLimit::Clock::time_point now);

  private:
    struct Line {
        std::string text;
        RateLimit limit;
    };

    std::list<Line> lines_;  // the last accepted one first
};

}  // namespace kovra::helper
