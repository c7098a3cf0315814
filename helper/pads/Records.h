#pragma once

#include <set>
#include <string>
#include <string_view>

#include "helper/Descriptor.h"

namespace kovra::helper {

// What must be given back, whoever does it: the names of the input devices that this program has muted, or was about
// to. Each is an empty file, "pads/input17" in the program's runtime folder, and so outlives the process that made it.
// The kernel gives no number twice until the next boot, and at boot the folder is empty.
class Records {
  public:
    // The folder is made when it is first needed. What stands in it that is no name of an input device is left alone.
    explicit Records(std::string runtimeFolder);

    // What was found at the start and what was added since, less what was removed.
    const std::set<std::string>& names() const { return names_; }

    // From here on it will be given back. 0, or the error: then nothing may be muted. A link in the way is one.
    int add(const std::string& name);
    // It has been given back.
    void remove(const std::string& name);

    // "input" and a number.
    static bool isName(std::string_view name);

  private:
    enum class IfMissing { make, leave };
    // The folder of the records, not open where there is none or it is not the program's own.
    Descriptor folder(IfMissing ifMissing, int& error) const;

    std::string runtimeFolder_;
    std::set<std::string> names_;
};

}  // namespace kovra::helper
