#pragma once

#include <optional>
#include <string>

namespace kovra {

class FileSystem;
class SystemLog;

// The one writer of the flag file, which tells the privileged helper whether to mute: the whole file is "on" or "off",
// with no line feed.
//
// A text is written only if it differs from the last one that this process wrote successfully; the first call always
// writes, whatever the file holds. A failure costs one log line and is tried again at the next call, also with the same
// text.
class HelperController {
  public:
    static constexpr const char* stateFile = "/Library/Application Support/ble-kovra/state";

    HelperController(FileSystem& files, SystemLog& log) : files_(files), log_(log) {}

    static HelperController& shared();

    void set(bool on);

  private:
    FileSystem& files_;
    SystemLog& log_;
    std::optional<std::string> lastWritten_;
};

}  // namespace kovra
