#pragma once

#include <sys/wait.h>

#include <filesystem>
#include <string>

#include "BLE_kovra/platform/ProcessRunner.h"
#include "tests/support/posix/Scripts.h"

namespace kovra {

// The programs that ProcessRunnerContract requires of a Driver, for a Driver that really starts them. The destructor
// waits for all children of this process, which end soon.
class ScriptedPrograms {
  public:
    ScriptedPrograms() = default;
    ScriptedPrograms(const ScriptedPrograms&) = delete;
    ScriptedPrograms& operator=(const ScriptedPrograms&) = delete;
    ~ScriptedPrograms() { waitForAll(); }
    static void waitForAll() {
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
    }

    Command printing(const std::string& text) const {
        return {scripts_.make(R"(printf %s "$1"; : >"$here/has run")"), {text}};
    }
    bool havePrinted() const { return std::filesystem::exists(scripts_ / "has run"); }
    Command working() const { return {scripts_.make("sleep 0.2", "working"), {}}; }
    Command missing() const { return {scripts_ / "missing", {}}; }

  private:
    Scripts scripts_;
};

}  // namespace kovra
