#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

// A watch on the flag file. It reports when a file is created at the flag's path or renamed to it, and when the
// permissions of the flag change. A write that failed before may then succeed. Writing to the file is not reported, and
// neither is a change of a flag that this user may not write. In a folder where this user may create the flag, its
// creation is not reported either: it is the program's own, as a rule, and must not wake it.
//
// The flag's folder need not exist yet: its nearest existing parent is watched until the folder is created. While
// nothing happens the program sleeps.
//
// Whoever owns the flag can cause events without end, for example by touching it. So at most `mostAtOnce` looks follow
// each other at once, and then there is one per `pause`. Events of the meantime stay in the kernel's queue, so the last
// change is always reported.
//
// If the system has no watches left, or the flag's folder cannot be read, changes cannot be detected. In that case a
// hand-over is reported one second after the start, and one second after each expect(). As long as watches are missing,
// it is reported again and again, after delays that grow to one minute, and each time a watch is tried first: other
// programs of the user may have used up the watches and have ended since.
class FlagHandover {
  public:
    static constexpr int mostAtOnce = 20;
    static constexpr std::chrono::milliseconds pause{50};

    // `flag` is an absolute path. `handedOver` is called from the queue. If the flag can be watched, a file that exists
    // at the start is not reported.
    FlagHandover(SdEventLoop& loop, const std::string& flag, std::function<void()> handedOver);
    FlagHandover(const FlagHandover&) = delete;
    FlagHandover& operator=(const FlagHandover&) = delete;
    ~FlagHandover();

    // Call this function when another user may have become active, so that a hand-over of the flag is expected.
    void expect();

  private:
    // One step of the path to the flag: a folder, and the name to watch in it.
    struct Step {
        std::string folder;
        std::string name;
    };

    // Long enough for the helper to hand the flag over, and short enough for a user who waits for the trackpad.
    static constexpr std::chrono::seconds expectedHandoverDelay{1};
    static constexpr std::chrono::seconds longestDelay{60};

    void openWatch();
    void watchNearestFolder();
    void reportAfter(std::chrono::seconds delay);
    void changed();
    void listenAgain();
    void report() const;
    bool concernsFlag();
    bool isWatching() const;

    SdEventLoop& loop_;
    const std::function<void()> handedOver_;
    std::vector<Step> path_;  // from the root to the flag's folder
    std::optional<FileDescriptor> inotify_;
    const Step* watchedStep_ = nullptr;  // the step whose folder is watched
    bool lacksWatches_ = false;          // the last attempt to watch failed for want of memory or watches
    int watchDescriptor_ = -1;
    std::unique_ptr<SdEventLoop::Watch> watch_;  // uses the descriptor, so it is destroyed first
    std::unique_ptr<DelayedTask> fallback_;
    std::chrono::steady_clock::time_point lookedUntil_;  // when the looks so far would end if each took one pause
    std::unique_ptr<DelayedTask> nextLook_;
};

}  // namespace kovra
