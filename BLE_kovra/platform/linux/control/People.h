#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "BLE_kovra/control/Facts.h"

namespace kovra::control {

// Returns the account with its name, or with its number as the name if it has none.
Person personOf(uid_t user);

// Returns who is at the machine: the user of the active local session of seat0, by the login manager.
Seat seat();

// Returns whether this process runs in a remote session, for example over ssh.
bool isRemoteSession();

// Returns the running processes that the kernel calls `name`, the oldest first. `folder` is /proc. Where each user sees
// only their own processes, others are missing.
std::vector<Process> processesNamed(const std::string& name, const std::string& folder = "/proc");

// Returns what the kernel calls this process, as valid UTF-8. Empty if that is not known.
std::string nameOfProcess(int process);

}  // namespace kovra::control
