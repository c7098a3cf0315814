#pragma once

#include <sys/types.h>

#include <optional>

#include "helper/session/ProcessStatus.h"

namespace kovra::helper {

// Returns the status of a process that is this user's application. Returns nullopt for any other process.
//
// The application is a process of this user, real and effective, in the namespaces of the helper. It was started as
// "ble-kovra", and the kernel calls it so. A script with that name does not count, because the kernel starts its
// interpreter. A process of a container does not count either, although it may have the number of this user.
//
// The helper's user may not read which file another user's process executes. So a program that claims the name counts.
// It belongs to the same user, who may write the flag anyway.
std::optional<ProcessStatus> applicationOf(uid_t user, pid_t process);

}  // namespace kovra::helper
