#pragma once

#include <optional>
#include <string>

namespace kovra {

// Where the program of this name is: looked for in $PATH, unless the name is a path already. Nothing where there is
// none that may be run.
std::optional<std::string> findProgram(const std::string& name);

// The path of the program that this process runs.
std::string ownProgram();

}  // namespace kovra
