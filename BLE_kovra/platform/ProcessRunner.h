#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/Outcome.h"

namespace kovra {

// A program to run: the absolute path of its file, and its arguments without the name.
struct Command {
    std::string executable;
    std::vector<std::string> arguments;
    bool operator==(const Command&) const = default;
};

// Starts other programs. Once the application terminates it starts none.
class ProcessRunner {
  public:
    // Far above what any program has to say: 256 MiB. One that writes without end is not to take all memory.
    static constexpr std::size_t longestOutput = std::size_t{256} << 20;

    virtual ~ProcessRunner() = default;

    // Runs the program to its end and returns every byte that it wrote, standard output and standard error through one
    // pipe in the order of writing, whatever its exit status. Null if it could not be started or the application
    // terminates first, and if it writes more than the longest output: it is then told to end. Meanwhile the main queue
    // goes on: this blocks its caller alone.
    virtual std::optional<std::string> output(const Command& command) = 0;

    // Starts the program, with the streams as this process has them, and lets it go.
    virtual Outcome start(const Command& command) = 0;
};

}  // namespace kovra
