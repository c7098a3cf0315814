#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/Outcome.h"

namespace kovra {

// A program to run: its absolute path and its arguments, without the program's name.
struct Command {
    std::string executable;
    std::vector<std::string> arguments;
    bool operator==(const Command&) const = default;
};

// A service that starts other programs. After the application has terminated, it starts none.
class ProcessRunner {
  public:
    // The largest output that output() accepts: 256 MiB, far above any real output. Without a limit, a program that
    // writes without end would use up the memory.
    static constexpr std::size_t longestOutput = std::size_t{256} << 20;

    virtual ~ProcessRunner() = default;

    // Runs the program to its end and returns its output, whatever its exit status. Standard output and standard error
    // share one pipe. Returns nullopt if the program cannot be started, if the application terminates first, or if the
    // output exceeds `longestOutput`. In the last two cases the program is terminated. Blocks only the caller; the main
    // queue keeps running.
    virtual std::optional<std::string> output(const Command& command) = 0;

    // Starts the program with this process's standard streams and does not wait for it.
    virtual Outcome start(const Command& command) = 0;
};

}  // namespace kovra
