#include "helper/Log.h"

#include <poll.h>
#include <unistd.h>

#include <string>
#include <system_error>

#include "helper/RepeatFilter.h"

namespace kovra::helper {

namespace {

bool standardErrorIsFull() {
    pollfd standardError{STDERR_FILENO, POLLOUT, 0};
    return ::poll(&standardError, 1, 0) == 0;
}

}  // namespace

void log(Severity severity, std::string_view line) {
    static RepeatFilter filter;
    const std::string text = "<" + std::to_string(static_cast<int>(severity)) + ">" + std::string(line) + "\n";
    if (!filter.accepts(text, RateLimit::Clock::now()) || standardErrorIsFull()) return;
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text.data(), text.size());
}

void logError(std::string_view what, int error) {
    log(Severity::error, std::string(what) + ": " + std::generic_category().message(error));
}

}  // namespace kovra::helper
