#include "BLE_kovra/platform/posix/Path.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>

namespace kovra {

std::string folderOf(const std::string& path) {
    const std::size_t end = path.rfind('/');
    return end == std::string::npos ? "" : path.substr(0, std::max<std::size_t>(end, 1));
}

std::optional<std::string> linkTarget(const std::string& path) {
    std::array<char, PATH_MAX> target;  // NOLINT(cppcoreguidelines-pro-type-member-init): readlink() fills it
    const ssize_t size = ::readlink(path.c_str(), target.data(), target.size());
    if (size < 0) return std::nullopt;
    return std::string(target.data(), static_cast<std::size_t>(size));
}

}  // namespace kovra
