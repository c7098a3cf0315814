#pragma once

#include <string>

#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

// The lock of the user's one instance on this machine. The kernel releases it when the process ends, however it ends.
//
// The file is never removed. If it cannot be created, there is no lock, and the program runs without one.
class InstanceLock {
  public:
    // An empty path means that there is no lock.
    explicit InstanceLock(const std::string& path);

    enum class State {
        held,
        heldElsewhere,  // by another process, so another instance is running
        none            // nothing is known about other instances
    };
    State state() const { return state_; }

  private:
    static State lock(const FileDescriptor& file);

    FileDescriptor file_;
    State state_;
};

// ble-kovra.lock in $XDG_RUNTIME_DIR. Without that variable, a file beside the preferences, named after the machine,
// because machines may share a home directory. Empty if there is no directory for the file.
std::string standardLockPath();

}  // namespace kovra
