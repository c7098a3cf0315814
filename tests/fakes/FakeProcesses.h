#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/ProcessRunner.h"

namespace kovra {

// Simulated programs. `outputs` contains what each program prints, by its path. output() returns nothing for any other
// program. start() succeeds unless there is a `reasonToFail`. `terminate()` simulates the end of the application.
class FakeProcesses : public ProcessRunner {
  public:
    std::optional<std::string> output(const Command& command) override {
        if (hasTerminated_) return std::nullopt;
        ran.push_back(command);
        if (meanwhile) meanwhile();
        if (hasTerminated_) return std::nullopt;
        const auto found = outputs.find(command.executable);
        return found == outputs.end() ? std::nullopt : std::optional(found->second);
    }
    Outcome start(const Command& command) override {
        if (hasTerminated_) return Outcome::failure("terminated");
        started.push_back(command);
        return reasonToFail ? Outcome::failure(*reasonToFail) : Outcome::success();
    }

    void terminate() { hasTerminated_ = true; }

    std::map<std::string, std::string> outputs;
    std::function<void()> meanwhile;  // called while a program runs
    std::optional<std::string> reasonToFail;
    std::vector<Command> ran;
    std::vector<Command> started;

  private:
    bool hasTerminated_ = false;
};

}  // namespace kovra
