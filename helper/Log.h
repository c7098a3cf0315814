#pragma once

#include <string_view>

namespace kovra::helper {

// The severities of syslog that the helper uses. The journal reads the number from the start of a line, where it is in
// angle brackets.
enum class Severity { error = 3, warning = 4, notice = 5, info = 6 };

// Writes one line to standard error with a single write(2), and ignores a failure. systemd passes the line to the
// journal. A line that RepeatFilter rejects is not written. Never waits: a line for which standard error has no room is
// lost. Otherwise a journal that hangs would stop the helper while a touchpad is muted.
void log(Severity severity, std::string_view line);

// Logs "what: message" as an error, with the system's message for this error number.
void logError(std::string_view what, int error);

}  // namespace kovra::helper
