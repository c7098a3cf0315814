#pragma once

#include <string_view>

namespace kovra::helper {

// syslog's numbers, which the journal reads off the head of a line.
enum class Severity { error = 3, warning = 4, notice = 5, info = 6 };

// One line of English on the error output, which the journal keeps; in one piece, and without waiting for anything that
// could be done about a failure. A line that came just before is not repeated.
void log(Severity severity, std::string_view line);

// "what: the system's reason".
void logError(std::string_view what, int error);

}  // namespace kovra::helper
