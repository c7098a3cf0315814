#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

// Tells when somebody else has put the flag's file in place, or given rights to it: what could not be written before
// may be written then. What is written into the file tells nothing.
//
// The flag's folder need not exist yet: the nearest one above it is watched until it comes. While nothing happens there
// the program sleeps.
//
// Where the system has no watch left, or the flag's folder may not be read, a hand-over that is to be expected is taken
// for done a little later, once: at the start, and whenever expect() says so.
class FlagHandover {
  public:
    // The absolute path of the flag. `handedOver` is called from the queue, and not for what is there already.
    FlagHandover(SdEventLoop& loop, const std::string& flag, std::function<void()> handedOver);
    FlagHandover(const FlagHandover&) = delete;
    FlagHandover& operator=(const FlagHandover&) = delete;
    ~FlagHandover();

    // Somebody else has come to be at the machine, so that the flag is about to be handed over.
    void expect();

  private:
    // A step of the way to the flag: the folder, and what is looked for in it.
    struct Step {
        std::string folder;
        std::string name;
    };

    // Ample for whoever hands it over, and soon enough for whoever waits for their trackpad.
    static constexpr std::chrono::seconds untilItIsTakenForDone{1};

    void settle();
    void changed();
    void report() const;
    bool concernsFlag();
    bool isWatching() const;

    SdEventLoop& loop_;
    const std::function<void()> handedOver_;
    std::vector<Step> way_;  // from the root to the flag's folder
    FileDescriptor events_;
    const Step* at_ = nullptr;  // the step whose folder is watched
    int watched_ = -1;
    std::unique_ptr<SdEventLoop::Watch> watch_;  // of the events' descriptor, so it goes first
    std::unique_ptr<DelayedTask> expected_;
};

}  // namespace kovra
