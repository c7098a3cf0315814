#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "helper/Descriptor.h"

namespace kovra::helper {

// The folders on the way to a folder, each opened inside the one before; the folder itself is the last one.
struct TrustedWay {
    std::vector<Descriptor> folders;
    std::string refusal;  // why there are none: one line for the log
};

// Goes from `start` along the absolute `path`, as if `start` were the root. Follows no link from there on, and refuses
// a folder, the start included, that is not the owner's or that anybody else may write to.
TrustedWay openTrustedWay(const std::filesystem::path& start, const std::filesystem::path& path, uid_t owner);

}  // namespace kovra::helper
