#pragma once

#include "BLE_kovra/platform/FileSystem.h"

namespace kovra {

// Files of a POSIX system, written in place: a reader that polls without pause sees the old text, the new text or, for
// an instant, something that is neither, never "on" by mistake, and never an empty file, but for one just made and one
// whose disk is full.
class PosixFileSystem : public FileSystem {
  public:
    Outcome writeWholeFile(const std::string& path, std::string_view text) override;
    bool fileExists(const std::string& path) const override;
};

}  // namespace kovra
