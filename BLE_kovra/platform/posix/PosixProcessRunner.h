#pragma once

#include "BLE_kovra/platform/ProcessRunner.h"
#include "BLE_kovra/platform/posix/ReleasedPrograms.h"

namespace kovra {

// A runner of other programs. While output() waits for a program, it runs the event loop.
//
// If the application terminates first, output() sends SIGTERM to the program. A program started by start() has its own
// session and survives the application.
class PosixProcessRunner : public ProcessRunner {
  public:
    explicit PosixProcessRunner(DescriptorLoop& loop, std::size_t longest = longestOutput)
        : loop_(loop), longest_(longest), started_(loop) {}

    std::optional<std::string> output(const Command& command) override;
    Outcome start(const Command& command) override;

  private:
    DescriptorLoop& loop_;
    std::size_t longest_;
    ReleasedPrograms started_;
};

}  // namespace kovra
