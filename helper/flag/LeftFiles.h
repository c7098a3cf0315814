#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <set>
#include <string>

#include "helper/Descriptor.h"
#include "helper/Loop.h"
#include "helper/PacedWatch.h"
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
// file is truncated within a quarter of a second, so that no user can fill the disk through it. A file that the kernel
// cannot watch is truncated at the next hand-over.
class LeftFilesWatch {
  public:
    // The folder must stay open. Throws like Loop::onReadable().
    LeftFilesWatch(Loop& loop, int folder, uid_t owner);

    // Watches the left files that exist now, and no others. Truncates them, as they may have grown before.
    void update();

  private:
    void receiveEvents();

    const int folder_;
    const uid_t owner_;
    Descriptor events_;
    std::set<int> watches_;
    std::optional<PacedWatch> watch_;
};

}  // namespace kovra::helper
