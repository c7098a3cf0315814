#pragma once

#include <string>
#include <string_view>

#include "BLE_kovra/platform/Outcome.h"

namespace kovra {

class FileSystem {
  public:
    virtual ~FileSystem() = default;

    // Replaces the content of the file at the absolute path in place: no temporary file, no rename. Creates a missing
    // file but not its folder. Fails for anything but a regular file, and if another file has replaced the written one
    // meanwhile.
    virtual Outcome writeWholeFile(const std::string& path, std::string_view text) = 0;

    // Returns whether the absolute path exists. Follows links.
    virtual bool fileExists(const std::string& path) const = 0;
};

}  // namespace kovra
