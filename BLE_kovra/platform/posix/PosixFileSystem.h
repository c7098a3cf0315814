#pragma once

#include "BLE_kovra/platform/FileSystem.h"

namespace kovra {

// The files of a POSIX system, written in place. During a write a reader sees the old text, the new text or a fragment
// of either, but never a wrong "on". It sees an empty file only if the file was just created or a write has failed.
class PosixFileSystem : public FileSystem {
  public:
    Outcome writeWholeFile(const std::string& path, std::string_view text) override;
    bool fileExists(const std::string& path) const override;
};

}  // namespace kovra
