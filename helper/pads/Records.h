#pragma once

#include <set>
#include <string>
#include <string_view>

#include "helper/Descriptor.h"

namespace kovra::helper {

// What must be given back, whoever does it: the names of the input devices that this program has muted, or was about
// to. Each is an empty file, "pads/input17" in the program's runtime folder, and so outlives the process that made it.
// The kernel gives no number twice until the next boot, and at boot the folder is empty.
//
// One process at a time has them: a second one would give back what the first has muted, or lose a record between the
// first one's steps. Whoever has them has the folder locked, which no other user can, since none can open it.
class Records {
  public:
    enum class IfMissing { make, leave };

    // Reads them, whoever has them. What stands in the folder that is no name of an input device is left alone.
    explicit Records(std::string runtimeFolder);

    // From here on, and until this process ends, however it does, no other one has them. 0, or the error: EWOULDBLOCK
    // where another one has them already, ENOENT where there is no folder and none is to be made.
    int claim(IfMissing ifMissing);

    // What was found at the start and what was added since, less what was removed.
    const std::set<std::string>& names() const { return names_; }

    // From here on it will be given back. Claims the records where that has not been done. 0, or the error: then
    // nothing may be muted. A link in the way is one, and a folder in which others may write.
    int add(const std::string& name);
    // It has been given back.
    void remove(const std::string& name);

    // "input" and a number.
    static bool isName(std::string_view name);

  private:
    // The folder of the records, not open where there is none or a link stands in its place.
    Descriptor folder(IfMissing ifMissing, int& error) const;

    std::string runtimeFolder_;
    Descriptor claimed_;  // the folder, locked
    std::set<std::string> names_;
};

}  // namespace kovra::helper
