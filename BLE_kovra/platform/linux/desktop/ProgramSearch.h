#pragma once

#include <optional>
#include <string>

namespace kovra {

// Returns the path of the program with this name. Searches $PATH, unless the name contains a slash. Returns nullopt if
// no executable file is found.
std::optional<std::string> findProgram(const std::string& name);

// Returns the path of the program that this process runs.
std::string ownProgram();

}  // namespace kovra
