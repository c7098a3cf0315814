#pragma once

#include <optional>
#include <string>

namespace kovra {

// The path of the program with this name. Searches $PATH, unless the name is itself a path. Empty if no executable file
// is found.
std::optional<std::string> findProgram(const std::string& name);

// The path of the program that this process runs.
std::string ownProgram();

}  // namespace kovra
