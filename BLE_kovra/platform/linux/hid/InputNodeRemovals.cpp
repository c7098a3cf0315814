#include "BLE_kovra/platform/linux/hid/InputNodeRemovals.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <system_error>
#include <utility>

namespace kovra {

std::unique_ptr<InputNodeRemovals> InputNodeRemovals::watch(SdEventLoop& loop, const std::string& folder,
                                                            std::function<void()> removed) {
    try {
        std::unique_ptr<InputNodeRemovals> removals(
            new InputNodeRemovals(loop, ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC), std::move(removed)));
        const int added = ::inotify_add_watch(removals->inotify_.number(), folder.c_str(), IN_DELETE | IN_ONLYDIR);
        return added < 0 ? nullptr : std::move(removals);
    } catch (const std::system_error&) {
        return nullptr;  // no descriptors left
    }
}

InputNodeRemovals::InputNodeRemovals(SdEventLoop& loop, int inotify, std::function<void()> removed)
    : inotify_(inotify), watch_(loop.watch(inotify, std::move(removed))) {}

// Drops the pending events. Their content is not needed, because the caller checks all nodes.
void InputNodeRemovals::rearm() {
    std::array<char, 4096> events;  // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
    while (::read(inotify_.number(), events.data(), events.size()) > 0) {
    }
    watch_->rearm();
}

}  // namespace kovra
