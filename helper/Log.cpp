#include "helper/Log.h"

#include <unistd.h>

#include <string>
#include <system_error>

#include "helper/RepeatFilter.h"

namespace kovra::helper {

void log(Severity severity, std::string_view line) {
    static RepeatFilter filter;
    const std::string text = "<" + std::to_string(static_cast<int>(severity)) + ">" + std::string(line) + "\n";
    if (!filter.accepts(text, RateLimit::Clock::now())) return;
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text.data(), text.size());
}

void logError(std::string_view what, int error) {
    log(Severity::error, std::string(what) + ": " + std::generic_category().message(error));
}

}  // namespace kovra::helper
