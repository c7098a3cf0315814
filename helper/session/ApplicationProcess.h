#pragma once

#include <sys/types.h>

#include <optional>

#include "helper/session/ProcessStatus.h"

namespace kovra::helper {

// Returns the status of the process if it is this user's application, and nullopt otherwise.
//
// The application is a process whose real and effective user is this user, in the user and process namespaces of the
// helper. It was started as "ble-kovra", and the kernel calls it so. A script with that name does not count, because
// the kernel starts its interpreter under the interpreter's name. A process of a container does not count either,
// although its UID may be the same.
//
// The helper's user may not read which file another user's process executes. So any program of this user that claims
// the name counts. That gains the user nothing, since they may write the flag anyway.
std::optional<ProcessStatus> applicationOf(uid_t user, pid_t process);

}  // namespace kovra::helper
