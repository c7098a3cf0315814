#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "helper/Descriptor.h"

namespace kovra::helper {

// Every folder of a path, from the root to the last one, or none if the path was refused. Each folder below the root
// was opened relative to its parent.
struct TrustedPath {
    std::vector<Descriptor> folders;
    std::vector<std::string> names;  // of all folders but the first: names[0] is the entry of folders[0], and so on
    std::string refusal;             // if the path was refused: the reason, one line for the log
};

// Opens every folder of an absolute path, which is resolved below `root`. Follows no symbolic link below `root`.
// Refuses the path if a folder cannot be opened, or if anyone but its owner can write it. The last folder must belong
// to `owner`. The folders above it, `root` included, must belong to `owner` or to the superuser. If `owner` is the
// superuser and only the last folder belongs to another user, the refusal names the user who must start the helper.
TrustedPath openTrustedPath(const std::string& root, std::string_view path, uid_t owner);

}  // namespace kovra::helper
