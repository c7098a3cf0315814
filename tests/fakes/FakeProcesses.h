#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/ProcessRunner.h"

namespace kovra {

// Programs that are there when the test says so: those with an output, and those that can be started.
class FakeProcesses : public ProcessRunner {
  public:
    std::optional<std::string> output(const Command& command) override {
        ran.push_back(command);
        if (meanwhile) meanwhile();
        const auto found = outputs.find(command.executable);
        return found == outputs.end() ? std::nullopt : std::optional(found->second);
    }
    Outcome start(const Command& command) override {
        started.push_back(command);
        return reasonToFail ? Outcome::failure(*reasonToFail) : Outcome::success();
    }

    std::map<std::string, std::string> outputs;
    std::function<void()> meanwhile;  // while a program runs
    std::optional<std::string> reasonToFail;
    std::vector<Command> ran;
    std::vector<Command> started;
};

}  // namespace kovra
