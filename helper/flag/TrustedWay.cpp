#include "helper/flag/TrustedWay.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace kovra::helper {

namespace {

// Why the folder that was to be opened is refused; empty where it is not. With an access control list the group's bits
// are the most that any entry grants, so they tell of those too.
std::string refusalOf(const Descriptor& folder, uid_t owner) {
    if (!folder.isOpen()) return std::generic_category().message(errno);
    struct stat status {};
    if (::fstat(folder.number(), &status) != 0) return std::generic_category().message(errno);
    if (status.st_uid != owner) return "it belongs to user " + std::to_string(status.st_uid);
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) return "others than its owner may write to it";
    return {};
}

}  // namespace

TrustedWay openTrustedWay(const std::filesystem::path& start, const std::filesystem::path& path, uid_t owner) {
    constexpr int how = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC;
    TrustedWay way;
    std::filesystem::path reached = start;
    const auto take = [&](Descriptor folder) {
        const std::string refusal = refusalOf(folder, owner);
        if (refusal.empty()) {
            way.folders.push_back(std::move(folder));
        } else {
            way.folders.clear();
            way.refusal = reached.string() + ": " + refusal;
        }
        return refusal.empty();
    };
    if (!take(Descriptor(::open(start.c_str(), how)))) return way;
    for (const auto& name : path.relative_path()) {
        reached /= name;
        if (!take(Descriptor(::openat(way.folders.back().number(), name.c_str(), how | O_NOFOLLOW)))) return way;
    }
    return way;
}

}  // namespace kovra::helper
