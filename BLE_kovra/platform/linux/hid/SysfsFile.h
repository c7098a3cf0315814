#pragma once

#include <string>
#include <variant>

namespace kovra {

// Returns the whole content of a file in sysfs, or an errno value if it cannot be read.
std::variant<std::string, int> readSysfsFile(const std::string& path);

}  // namespace kovra
