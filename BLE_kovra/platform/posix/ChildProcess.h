#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/posix/FileDescriptor.h"
#include "BLE_kovra/platform/posix/Spawn.h"

namespace kovra {

// A program that runs beside this one.
class ChildProcess {
  public:
    // Null where the program cannot be started; errno then says why.
    static std::unique_ptr<ChildProcess> start(Spawn& how, const std::string& executable,
                                               const std::vector<std::string>& arguments);

    // Tells it to end, unless it was let go, and waits for nothing.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Readable once the program has ended.
    int descriptor() const { return end_.number(); }
    // Once it has: nothing is left of it.
    void reap();
    void terminate() const;
    // From now on its end is its own affair.
    void letGo() { isLetGo_ = true; }

  private:
    ChildProcess(pid_t pid, int end) : pid_(pid), end_(end) {}

    pid_t pid_;  // 0 once it is gone
    FileDescriptor end_;
    bool isLetGo_ = false;
};

}  // namespace kovra
