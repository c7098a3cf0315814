#pragma once

#include <string_view>

namespace kovra::helper {

// Those severities of syslog that the helper uses. The journal reads the number, in angle brackets, at the start of a
// line.
enum class Severity { error = 3, warning = 4, notice = 5, info = 6 };

// Writes one line of English to standard error, from where the journal takes it. The line is written with one call, and
// a failure is ignored. A line that RepeatFilter rejects is not written.
void log(Severity severity, std::string_view line);

// Logs "what: message" as an error, with the system's message for this error number.
void logError(std::string_view what, int error);

}  // namespace kovra::helper
