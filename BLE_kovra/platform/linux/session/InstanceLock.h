#pragma once

#include <string>

#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

// A lock on a file, held by the user's only instance of the program on this machine. The kernel releases the lock when
// the process ends, for whatever reason.
//
// The file is never removed. If it cannot be created, the program runs without a lock.
class InstanceLock {
  public:
    // Takes the lock if it is free. An empty path means that there is no lock.
    explicit InstanceLock(const std::string& path);

    enum class State {
        held,
        heldElsewhere,  // by another process, so another instance is running
        none            // nothing is known about other instances
    };
    // If the lock was held elsewhere and is free now, takes it.
    State state() const;

  private:
    FileDescriptor file_;
};

// Returns the path ble-kovra.lock in $XDG_RUNTIME_DIR. If that variable is not set to an absolute path, as in a job of
// cron, uses the folder that systemd creates in `runtimeFolders` for the user. If there is none, returns the path of a
// file beside the preferences. Its name contains that of the machine, because machines may share a home directory.
// Returns an empty path if there is no directory for the file.
std::string standardLockPath(const std::string& runtimeFolders = "/run/user");

}  // namespace kovra
