#pragma once

#include <functional>
#include <optional>
#include <string>

namespace kovra {

// Returns the path of the program with this name. Searches $PATH, unless the name contains a slash. Returns nullopt if
// no executable file is found. Calls `visitor`, if given, with each path before looking there.
using PathVisitor = std::function<void(const std::string& path)>;
std::optional<std::string> findProgram(const std::string& name, const PathVisitor& visitor = nullptr);

// Returns the path of the program that this process runs.
std::string ownProgram();

// Returns whether the file of the program that this process runs was replaced or removed, for example by an upgrade.
bool isOwnProgramReplaced();

}  // namespace kovra
