#include "helper/RepeatFilter.h"

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace kovra::helper {

namespace {

constexpr std::size_t mostLines = 16;
const RateLimit repeats(3, std::chrono::hours(1));

}  // namespace

bool RepeatFilter::accepts(std::string_view line, RateLimit::Clock::time_point now) {
    auto known = std::find_if(lines_.begin(), lines_.end(), [&](const Line& each) { return each.text == line; });
    if (known == lines_.end()) {
        if (lines_.size() == mostLines) lines_.pop_back();
        known = lines_.insert(lines_.end(), {std::string(line), repeats});
    } else if (known == lines_.begin()) {
        return false;
    }
    if (known->limit.delay(now) > std::chrono::milliseconds(0)) return false;
    known->limit.use(now);
    lines_.splice(lines_.begin(), lines_, known);
    return true;
}

}  // namespace kovra::helper
