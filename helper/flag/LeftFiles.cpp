#include "helper/flag/LeftFiles.h"

#include <dirent.h>
#include <fcntl.h>

#include <chrono>
#include <string>
#include <string_view>

#include "helper/Handles.h"

namespace kovra::helper {

namespace {

constexpr std::string_view leftPrefix = "state.left.";
constexpr std::chrono::milliseconds checkInterval(500);

}  // namespace

std::string leftName(uid_t user) { return std::string(leftPrefix) + std::to_string(user); }

void forEachLeftFile(int folder, uid_t owner,
                     const std::function<void(const std::string& name, const FlagFile&)>& call) {
    const Handle<DIR, ::closedir> entries(::fdopendir(::openat(folder, ".", O_RDONLY | O_CLOEXEC)));
    if (!entries) return;
    while (const dirent* entry = ::readdir(entries.get())) {
        const std::string name = entry->d_name;
        if (!name.starts_with(leftPrefix)) continue;
        if (const auto left = FlagFile::open(folder, name.c_str(), owner)) call(name, *left);
    }
}

void truncateLeftFiles(int folder, uid_t owner) {
    forEachLeftFile(folder, owner, [](const std::string&, const FlagFile& left) {
        if (left.isWritableBy(std::nullopt)) left.truncate();
    });
}

void LeftFilesWatch::update() {
    bool mayGrow = false;
    forEachLeftFile(folder_, owner_,
                    [&](const std::string&, const FlagFile& left) { mayGrow = mayGrow || left.isOpenForWriting(); });
    truncateLeftFiles(folder_, owner_);  // last, since a file that nobody has open cannot grow any more
    nextCheck_ = mayGrow ? loop_.after(checkInterval, [this] { update(); }) : nullptr;
}

}  // namespace kovra::helper
