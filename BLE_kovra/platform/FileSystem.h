#pragma once

#include <string>
#include <string_view>

#include "BLE_kovra/platform/Outcome.h"

namespace kovra {

class FileSystem {
  public:
    virtual ~FileSystem() = default;

    // Makes `text` the whole content of the file at the absolute path, directly: no temporary file, no rename. Makes
    // the file where it is missing, never its folder. Only a plain file is written; one that another file replaced
    // meanwhile was not written.
    virtual Outcome writeWholeFile(const std::string& path, std::string_view text) = 0;

    // Whether there is anything at the absolute path; a link is followed.
    virtual bool fileExists(const std::string& path) const = 0;
};

}  // namespace kovra
