#pragma once

#include <string>
#include <string_view>

#include "BLE_kovra/platform/Outcome.h"

namespace kovra {

class FileSystem {
  public:
    virtual ~FileSystem() = default;

    // Replaces the content of the file at the absolute path in place: no temporary file, no rename. Creates a missing
    // file but not its folder. Writes only to a regular file. Fails if another file replaced it meanwhile.
    virtual Outcome writeWholeFile(const std::string& path, std::string_view text) = 0;

    // Whether the absolute path exists. Follows links.
    virtual bool fileExists(const std::string& path) const = 0;
};

}  // namespace kovra
