#pragma once

#include "BLE_kovra/platform/ProcessRunner.h"
#include "BLE_kovra/platform/posix/ReleasedPrograms.h"

namespace kovra {

// Other programs, waited for by turning the event loop.
//
// A program that is run for its output has that one reader: where the application ends first, by returning from its
// loop, the program is told to end.
// What is started lives in a session of its own, and on when we have ended.
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
