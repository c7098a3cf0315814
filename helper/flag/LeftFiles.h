#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "helper/Loop.h"
#include "helper/flag/FlagFile.h"

namespace kovra::helper {

// The name of a user's left file: the file that was this user's flag, and becomes the flag again when the user returns.
std::string leftName(uid_t user);

// Calls back for each regular file of the owner whose name begins with "state.left.", whatever its access list is.
void forEachLeftFile(int folder, uid_t owner,
                     const std::function<void(const std::string& name, const FlagFile&)>& call);

// Truncates all left files (see FlagFile::truncate()). Skips a file whose access control list is not the one that the
// helper gives to a left file.
void truncateLeftFiles(int folder, uid_t owner);

// Truncates the left files when they grow, since users can write them through descriptors that they have kept open. A
// file is truncated within half a second, so that no user can fill the disk through it.
//
// While somebody has a left file open for writing, the files are checked twice a second, and otherwise never. Events
// would not do: the kernel reports neither asynchronous writes nor an allocation that fails because it has filled the
// disk. On a file system that cannot tell whether a file is open, its space is freed at the next hand-over.
class LeftFilesWatch {
  public:
    // The folder must stay open.
    LeftFilesWatch(Loop& loop, int folder, uid_t owner) : loop_(loop), folder_(folder), owner_(owner) { update(); }

    // Call this function after a hand-over. Truncates the left files, and watches those that exist now. Throws like
    // Loop::after().
    void update();

  private:
    Loop& loop_;
    const int folder_;
    const uid_t owner_;
    std::unique_ptr<Loop::Watch> nextCheck_;
};

}  // namespace kovra::helper
