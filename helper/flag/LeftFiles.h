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

// The name of the file that was this user's flag, and will be it again when the user returns.
std::string leftName(uid_t user);

// Calls back for each file with such a name that belongs to the owner, whatever its access list is.
void forEachLeftFile(int folder, uid_t owner,
                     const std::function<void(const std::string& name, const FlagFile&)>& call);

// Truncates all these files. A file that any user can open for writing was not left by the helper, and is not touched.
void truncateLeftFiles(int folder, uid_t owner);

// Truncates them also later, when they grow: users can write them through descriptors that they have kept open. A file
// is truncated a quarter of a second later at most, so that nobody takes room on the disk by a file that is not theirs.
// A file that the kernel cannot watch is truncated at the next hand-over.
class LeftFilesWatch {
  public:
    // The folder must stay open.
    LeftFilesWatch(Loop& loop, int folder, uid_t owner);

    // Watches the files that exist now, and no others. Truncates them, as they may have grown before.
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
