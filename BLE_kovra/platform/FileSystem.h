#pragma once

#include <string>
#include <string_view>

#include "BLE_kovra/platform/Outcome.h"

namespace kovra {

class FileSystem {
  public:
    virtual ~FileSystem() = default;

    // Replaces the content of the file at the absolute path. Writes to the file itself, without a temporary file and
    // without a rename. Creates a missing file, but not its folder. Fails if the path is not a regular file, or if
    // another file replaces it during the write.
    virtual Outcome writeWholeFile(const std::string& path, std::string_view text) = 0;

    // Returns whether the absolute path exists. Follows symbolic links.
    virtual bool fileExists(const std::string& path) const = 0;
};

}  // namespace kovra
