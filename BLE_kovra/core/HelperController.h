#pragma once

#include <optional>
#include <string>

namespace kovra {

class FileSystem;
class SystemLog;

// The writer of the flag file. The privileged helper reads in this file whether to mute. The file consists of the text
// "on" or "off", without a line feed.
//
// set() writes only if the text differs from the last one that this process wrote successfully. So the first call
// always writes. A failure is logged in one line. It may have left the file empty, so the next call writes again,
// whatever its value.
class HelperController {
  public:
    static constexpr const char* stateFile = "/Library/Application Support/ble-kovra/state";

    HelperController(FileSystem& files, SystemLog& log) : files_(files), log_(log) {}

    static HelperController& shared();

    void set(bool on);

    // Returns the text of the last successful write of this process, or nullopt if there was none.
    const std::optional<std::string>& lastWritten() const { return lastWritten_; }

  private:
    FileSystem& files_;
    SystemLog& log_;
    std::optional<std::string> lastWritten_;
    bool hasFailed_ = false;  // the last write
};

}  // namespace kovra
