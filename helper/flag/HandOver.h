#pragma once

#include <sys/types.h>

#include <optional>

namespace kovra::helper {

inline constexpr const char* flagName = "state";

// Gives the flag's name to a file that exactly this user, or no user, can write besides the owner: the file that was
// this user's flag before, or else a new one that says "off". Returns 0 or an error number. After an error the old user
// can no longer write the flag, unless that user's right could not be revoked.
//
// A user's file is kept, and becomes the flag again when the user returns. If it lost its name instead, nobody could
// find and truncate it while the user fills the disk through an open descriptor (see LeftFilesWatch). It loses its name
// only if the link of step 1 cannot be created. One exception: a file that has as many links as the file system permits
// is renamed in step 1.
//
// The order of the steps keeps the flag safe if the process is killed between any two of them:
//   1. The flag gets a second hard link, state.left.UID, with the UID of the user who can write it. The helper reads a
//      flag with two hard links in the folder as "off".
//   2. That user's right to write the file is revoked. Descriptors that are already open stay writable, so another file
//      has to become the flag.
//   3. The new user gets the right to write their file, state.left.UID. If there is none, state.new is created and
//      completed.
//   4. That file is renamed to the flag's name. Every reader finds either the old or the new file.
// Each hand-over starts with cleanFlagFolder().
int handOverFlag(int folder, uid_t owner, std::optional<uid_t> user);

// Removes what a killed hand-over has left, without changing the flag. It removes state.new, which never became the
// flag. It also removes state.left.UID of the user who can write the flag, because that is a second hard link of the
// flag. It revokes the right to write any other state.left.UID.
void cleanFlagFolder(int folder, uid_t owner);

}  // namespace kovra::helper
