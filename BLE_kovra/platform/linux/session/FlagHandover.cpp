#include "BLE_kovra/platform/linux/session/FlagHandover.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace kovra {

namespace {

// An exchange of two files is a move to each of their names. Writing, also that of this program, is no part of it.
constexpr std::uint32_t whatCounts = IN_CREATE | IN_MOVED_TO | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

}  // namespace

FlagHandover::FlagHandover(SdEventLoop& loop, const std::string& flag, std::function<void()> handedOver)
    : loop_(loop), handedOver_(std::move(handedOver)), events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    std::filesystem::path folder;
    for (const auto& part : std::filesystem::path(flag)) {
        if (!folder.empty()) way_.push_back({folder.string(), part.string()});
        folder /= part;
    }
    if (events_.isOpen()) {
        settle();
        try {
            watch_ = loop.watch(events_.number(), [this] { changed(); });
        } catch (const std::system_error&) {
            // Out of descriptors: like a system without watches.
        }
    }
    expect();
}

FlagHandover::~FlagHandover() {
    if (expected_) expected_->cancel();
}

void FlagHandover::expect() {
    if (isWatching()) return;
    if (expected_) expected_->cancel();
    expected_ = loop_.asyncAfter(untilItIsTakenForDone, [this] { report(); });
}

// From the root downwards, so that nothing comes unnoticed between a look for it and the watch above it.
void FlagHandover::settle() {
    const int before = std::exchange(watched_, -1);
    at_ = nullptr;
    for (const Step& step : way_) {
        const int watched = ::inotify_add_watch(events_.number(), step.folder.c_str(), whatCounts);
        if (watched < 0) continue;
        if (watched_ >= 0) ::inotify_rm_watch(events_.number(), watched_);
        watched_ = watched;
        at_ = &step;
    }
    if (before >= 0 && before != watched_) ::inotify_rm_watch(events_.number(), before);
}

void FlagHandover::changed() {
    if (concernsFlag()) {
        settle();
        report();
    }
    watch_->rearm();
}

void FlagHandover::report() const {
    if (::access(way_.back().folder.c_str(), F_OK) == 0) handedOver_();
}

// A folder that is not there yet needs no watch of its own: the one above it has one.
bool FlagHandover::isWatching() const {
    return watch_ && (at_ == &way_.back() || ::access(way_.back().folder.c_str(), F_OK) != 0);
}

// Reads all that has happened. A folder that is watched no more may still be told of; that concerns nobody.
bool FlagHandover::concernsFlag() {
    bool concerns = false;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): read() fills it
    alignas(inotify_event) std::array<char, 4096> events;
    ssize_t count;
    while ((count = ::read(events_.number(), events.data(), events.size())) > 0) {
        for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
            inotify_event event{};
            std::memcpy(&event, events.data() + at, sizeof event);
            const char* name = events.data() + at + sizeof event;
            const bool isLost = (event.mask & IN_Q_OVERFLOW) != 0;
            if (isLost || (event.wd == watched_ && (event.len == 0 || at_->name == name))) concerns = true;
            at += sizeof event + event.len;
        }
    }
    return concerns;
}

}  // namespace kovra
