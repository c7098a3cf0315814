#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

// A watch on the flag. It reports when a file was put in place as the flag, or when the flag's permissions were
// changed: a write that failed before may then succeed. Writing to the file is not reported.
//
// The flag's folder need not exist yet: its nearest existing parent is watched until the folder is created. While
// nothing happens the program sleeps.
//
// If the system has no watches left, or the flag's folder cannot be read, an expected hand-over is reported one second
// later, once. A hand-over is expected at the start and after each expect().
class FlagHandover {
  public:
    // `flag` is an absolute path. `handedOver` is called from the queue. While the flag is watched, it is not called
    // for a file that exists at the start.
    FlagHandover(SdEventLoop& loop, const std::string& flag, std::function<void()> handedOver);
    FlagHandover(const FlagHandover&) = delete;
    FlagHandover& operator=(const FlagHandover&) = delete;
    ~FlagHandover();

    // Call it when the user at the machine may have changed, so that a hand-over of the flag is expected.
    void expect();

  private:
    // One step of the path to the flag: a folder, and the name to look for in it.
    struct Step {
        std::string folder;
        std::string name;
    };

    // Long enough for the helper to hand the flag over, and short enough for a user who waits for the trackpad.
    static constexpr std::chrono::seconds expectedHandoverDelay{1};

    void watchNearestFolder();
    void changed();
    void report() const;
    bool concernsFlag();
    bool isWatching() const;

    SdEventLoop& loop_;
    const std::function<void()> handedOver_;
    std::vector<Step> path_;  // from the root to the flag's folder
    FileDescriptor inotify_;
    const Step* watchedStep_ = nullptr;  // the step whose folder is watched
    int watchDescriptor_ = -1;
    std::unique_ptr<SdEventLoop::Watch> watch_;  // uses the descriptor, so it is destroyed first
    std::unique_ptr<DelayedTask> fallback_;
};

}  // namespace kovra
