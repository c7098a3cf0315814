#include "helper/flag/LeftFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "helper/Handles.h"

namespace kovra::helper {

namespace {

constexpr std::string_view leftPrefix = "state.left.";

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

LeftFilesWatch::LeftFilesWatch(Loop& loop, int folder, uid_t owner)
    : folder_(folder), owner_(owner), events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (events_.isOpen()) {
        const RateLimit truncations(4, std::chrono::milliseconds(250));
        watch_.emplace(loop, events_.number(), truncations, [this] { receiveEvents(); });
    }
    update();
}

// Removes the old watches one by one, because closing the inotify descriptor and opening another one takes
// milliseconds.
void LeftFilesWatch::update() {
    const std::set<int> before = std::exchange(watches_, {});
    forEachLeftFile(folder_, owner_, [&](const std::string& name, const FlagFile&) {
        const std::string path = "/proc/self/fd/" + std::to_string(folder_) + "/" + name;
        const int watch = ::inotify_add_watch(events_.number(), path.c_str(), IN_MODIFY | IN_DONT_FOLLOW);
        if (watch >= 0) watches_.insert(watch);
    });
    for (const int watch : before)
        if (!watches_.contains(watch)) ::inotify_rm_watch(events_.number(), watch);
    truncateLeftFiles(folder_, owner_);
}

// Empties the queue of events. Which of the files has changed does not matter. If events remain, the watch calls this
// function again.
void LeftFilesWatch::receiveEvents() {
    alignas(inotify_event) std::array<char, 16'384> buffer{};
    [[maybe_unused]] const ssize_t size = ::read(events_.number(), buffer.data(), buffer.size());
    truncateLeftFiles(folder_, owner_);
}

}  // namespace kovra::helper
