#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/posix/FileDescriptor.h"
#include "BLE_kovra/platform/posix/Spawn.h"

namespace kovra {

// A child process that this object starts, ends and reaps.
class ChildProcess {
  public:
    // Starts the program. Returns null, with errno set, on failure.
    static std::unique_ptr<ChildProcess> start(Spawn& how, const std::string& executable,
                                               const std::vector<std::string>& arguments);

    // Sends SIGTERM unless the process was released or reaped. Does not wait for its end.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Returns a descriptor that is readable once the process has ended.
    int descriptor() const { return end_.number(); }
    // Waits for the process, so that no zombie is left.
    void reap();
    void terminate() const;
    // Sends SIGKILL, for a process that hangs.
    void kill() const;
    // Lets the process outlive this object.
    void release() { isReleased_ = true; }

  private:
    ChildProcess(pid_t pid, int end) : pid_(pid), end_(end) {}

    pid_t pid_;  // 0 after reap()
    FileDescriptor end_;
    bool isReleased_ = false;
};

}  // namespace kovra
