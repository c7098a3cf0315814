#include "helper/flag/TrustedPath.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <system_error>
#include <utility>

namespace kovra::helper {

namespace {

constexpr uid_t superuser = 0;

// The reason to refuse the folder, or an empty string. With an access control list the group bits are the list's mask,
// so they also cover its entries for other users. Must be called directly after open(), as it reads errno.
std::string refusalOf(const Descriptor& folder, std::initializer_list<uid_t> owners) {
    if (!folder.isOpen()) return std::generic_category().message(errno);
    struct stat status{};
    if (::fstat(folder.number(), &status) != 0) return std::generic_category().message(errno);
    if (std::find(owners.begin(), owners.end(), status.st_uid) == owners.end())
        return "it belongs to user " + std::to_string(status.st_uid);
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) return "others than its owner may write to it";
    return {};
}

// Tells root what to do if the folder was installed for the helper's user. Only root can have given it to that user,
// since the folders above are trusted.
std::string refusalOfLast(const Descriptor& folder, uid_t owner) {
    const std::string refusal = refusalOf(folder, {owner});
    struct stat status{};
    const bool isSomebodys = owner == superuser && ::fstat(folder.number(), &status) == 0 && status.st_uid != superuser;
    return isSomebodys ? refusal + ": start the helper as that user, not as root" : refusal;
}

// Returns the names of which a path consists, without its slashes.
std::vector<std::string> namesIn(std::string_view path) {
    std::vector<std::string> names;
    while (!path.empty()) {
        const std::string_view name = path.substr(0, path.find('/'));
        if (!name.empty()) names.emplace_back(name);
        path.remove_prefix(std::min(name.size() + 1, path.size()));
    }
    return names;
}

}  // namespace

TrustedPath openTrustedPath(const std::string& root, std::string_view path, uid_t owner) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC;
    TrustedPath trusted;
    trusted.names = namesIn(path);
    std::string reached = root;
    const auto append = [&](Descriptor folder) {
        const bool isLast = trusted.folders.size() == trusted.names.size();
        const std::string refusal = isLast ? refusalOfLast(folder, owner) : refusalOf(folder, {superuser, owner});
        if (refusal.empty()) {
            trusted.folders.push_back(std::move(folder));
        } else {
            trusted.folders.clear();
            trusted.refusal = reached + ": " + refusal;
        }
        return refusal.empty();
    };
    if (!append(Descriptor(::open(root.c_str(), flags)))) return trusted;
    for (const std::string& name : trusted.names) {
        if (!reached.ends_with('/')) reached += '/';
        reached += name;
        if (!append(Descriptor(::openat(trusted.folders.back().number(), name.c_str(), flags | O_NOFOLLOW))))
            return trusted;
    }
    return trusted;
}

}  // namespace kovra::helper
