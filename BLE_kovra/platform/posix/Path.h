#pragma once

#include <optional>
#include <string>

namespace kovra {

// Paths without <filesystem>, which would link the locales of the C++ runtime into the resident program.

// Returns the folder of the file or folder at this path: "/a" for "/a/b", "/" for "/a", and "" for a name without a
// folder.
std::string folderOf(const std::string& path);

// Returns the target of the symbolic link at this path as it was written, or nothing if there is no link that can be
// read.
std::optional<std::string> linkTarget(const std::string& path);

}  // namespace kovra
