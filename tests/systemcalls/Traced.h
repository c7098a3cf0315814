#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/helper/ProgramRig.h"

namespace kovra::systemcalls {

// A system call that fails once: its name, the error, and which of the calls with this name fails, counted from 1. If
// there is no name, none fails.
struct Failure {
    std::string call;
    std::string error;
    int place = 0;
};

// What a program did with its life, in words for the table.
struct Outcome {
    std::string result;  // "as usual", "late", "muted nothing", "did not start", "ended", or what must not happen
    bool isWrong = false;
    std::string log;  // what it wrote to standard error
};

// A program in the chroot of `machine`, run by strace, which lets the system call fail, or writes all calls to a file.
class Traced {
  public:
    // `trace`: the file for all calls, as seen in the chroot; empty for none. `environment` has entries NAME=VALUE.
    Traced(const std::string& program, const std::vector<std::string>& environment, const Failure& failure,
           const std::string& trace);

    helper::ChildProgram& process() { return *process_; }
    std::string log() const;
    // What the process wrote about a failure that is the program's own fault; empty if there is none.
    std::string breakage() const;

  private:
    std::unique_ptr<helper::ChildProgram> process_;
};

// A life of the helper from start to stop: the flag is switched on and off.
Outcome helperLife(helper::Machine& machine, const std::string& program, const Failure& failure,
                   const std::string& trace);
// A life of the application from start to stop: the chosen mouse is connected.
Outcome applicationLife(helper::Machine& machine, const std::string& program, const Failure& failure,
                        const std::string& trace);

}  // namespace kovra::systemcalls
