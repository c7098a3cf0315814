#include "helper/Log.h"

#include <unistd.h>

#include <string>
#include <system_error>

namespace kovra::helper {

void log(Severity severity, std::string_view line) {
    static std::string previous;
    std::string text = "<" + std::to_string(static_cast<int>(severity)) + ">" + std::string(line) + "\n";
    if (text == previous) return;
    previous = std::move(text);
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, previous.data(), previous.size());
}

void logError(std::string_view what, int error) {
    log(Severity::error, std::string(what) + ": " + std::generic_category().message(error));
}

}  // namespace kovra::helper
