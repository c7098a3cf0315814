#pragma once

#include <sys/types.h>

#include <memory>
#include <string>

#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

// A program that runs beside this one. It starts with an empty signal mask, default handlers, and no descriptor of ours
// but the one that it is given and the standard error stream.
class ChildProcess {
  public:
    // `ours` becomes `theirs` in the program, 3 or more. Null where the program cannot be started.
    static std::unique_ptr<ChildProcess> start(const std::string& path, int ours, int theirs);

    // Tells it to end, and waits for nothing.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Readable once the program has ended.
    int descriptor() const { return process_.number(); }
    // True once it has ended; nothing of it is then left.
    bool hasEnded();
    void terminate() const;

  private:
    ChildProcess(pid_t pid, int process) : pid_(pid), process_(process) {}

    pid_t pid_;  // 0 once it is gone
    FileDescriptor process_;
};

}  // namespace kovra
