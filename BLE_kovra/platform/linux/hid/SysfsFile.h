#pragma once

#include <string>
#include <variant>

namespace kovra {

// The whole content of a file that the kernel makes up as it is read, or the error for which there is none.
std::variant<std::string, int> contentOfSysfsFile(const std::string& path);

}  // namespace kovra
