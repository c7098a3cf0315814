#pragma once

#include <cerrno>
#include <string>

#include "tests/helper/model/Machine.h"

namespace kovra::helper::model {

// What the replaced calls have in common.

inline int failWith(int error) {
    errno = error;
    return -1;
}

// Ends a process that is dead. Only in calls through which C++ lets an exception pass: not in those that C declares as
// ones that throw nothing. There a dead process goes on without any effect, until it makes a call of the former kind.
inline void endIfDead(const Entry& machine) {
    if (machine->isDead()) throw Killed();
}

// The start of a call that changes a file. Returns 0 or the error with which the call fails. `grows` if the call needs
// room on the disk.
inline int startChange(const Entry& machine, const std::string& path, bool grows) {
    return machine->diesHere() ? EIO : machine->fault(path, grows);
}

}  // namespace kovra::helper::model
