#pragma once

#include <string_view>

namespace kovra::helper {

// The severities of syslog. The journal reads the number at the start of a line.
enum class Severity { error = 3, warning = 4, notice = 5, info = 6 };

// Writes one line of English to standard error, from where the journal takes it. The line is written with one call, and
// a failure is ignored. A line that RepeatFilter rejects is not repeated.
void log(Severity severity, std::string_view line);

// Logs "what: the system's message for the error".
void logError(std::string_view what, int error);

}  // namespace kovra::helper
