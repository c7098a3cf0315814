#pragma once

#include <list>
#include <string>
#include <string_view>

#include "helper/RateLimit.h"

namespace kovra::helper {

// A filter that keeps repeated lines from filling the log. It rejects a line that equals the last accepted one. It
// accepts any other line three times, and after that once per hour. It remembers the 16 different lines that were
// accepted last; every other line counts as new.
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
