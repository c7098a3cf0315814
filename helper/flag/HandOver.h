#pragma once

#include <sys/types.h>

#include <optional>

namespace kovra::helper {

// The file's name in the folder.
inline constexpr const char* flagName = "state";

// Puts a flag in place that exactly this user may write, or nobody, with the content that this user last left, else
// "off". 0, or the error; then the flag in place is nobody's.
//
// In this order, so that being killed between any two steps hurts nobody:
//   1. the flag in place also becomes state.left.USER of the user who may write it. A name and not a copy: what still
//      reaches it through a descriptor counts when that user returns. A flag with two names says off to the helper
//   2. that user's right is taken away. Descriptors that are open stay so, which is why the file has to go
//   3. the new one is made whole as state.new, open to nobody before it is whole
//   4. it takes the flag's name in one step: whoever opens the flag finds the old or the new one, never none
//   5. the new user's state.left.USER is removed; its content is in the flag
// The next one begins by clearing up.
int handOverFlag(int folder, uid_t owner, std::optional<uid_t> user);

// Clears away what a hand-over that was killed has left, also where the flag in place is to stay: state.new, which was
// never in place; and state.left.USER of the user whose flag is in place, which has been used, or is the flag itself.
void clearUpFlagFolder(int folder, uid_t owner);

}  // namespace kovra::helper
