#pragma once

#include <sys/types.h>

#include <optional>

namespace kovra::helper {

// The name of the flag file in its folder.
inline constexpr const char* flagName = "state";

// Replaces the flag with a new file that exactly this user, or no user, can write. Its content is what the user last
// left in the flag, or "off". Returns 0 or an error number; after an error no user can write the flag, unless the old
// user's right could not be revoked.
//
// The order of the steps keeps the flag safe if the process is killed between any two of them:
//   1. The flag gets a second hard link, state.left.USER, named after the user who can write it. A copy is not enough:
//      what this user still writes through an open descriptor counts when the user returns. The helper reads a flag
//      with two names in the folder as "off".
//   2. That user's right to write the file is revoked. Descriptors that are already open stay writable, so the file has
//      to be replaced as well.
//   3. The new file is created as state.new and completed before the new user can write it.
//   4. It is renamed to the flag's name. Every reader finds either the old or the new file.
//   5. The new user's state.left.USER is removed, because its content is in the flag now.
// Each hand-over starts with cleanFlagFolder().
int handOverFlag(int folder, uid_t owner, std::optional<uid_t> user);

// Removes what a killed hand-over has left, and does not change the flag. It removes state.new, which never became the
// flag. It also removes state.left.USER of the user who can write the flag. The content of that file was used, or the
// file is the flag itself.
void cleanFlagFolder(int folder, uid_t owner);

}  // namespace kovra::helper
