#pragma once

#include <functional>
#include <memory>
#include <string>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

// Reports that the kernel has removed the node of an input device, such as a mouse, from /dev/input. The kernel does
// this without udevd, so the removal is reported even while udevd hangs. Other changes in the folder do not wake the
// process.
class InputNodeRemovals {
  public:
    // `removed` is called from the queue. After a call the watch is inactive until rearm(). Returns null if the folder
    // cannot be watched.
    static std::unique_ptr<InputNodeRemovals> watch(SdEventLoop& loop, const std::string& folder,
                                                    std::function<void()> removed);

    InputNodeRemovals(const InputNodeRemovals&) = delete;
    InputNodeRemovals& operator=(const InputNodeRemovals&) = delete;

    // Discards all removals until now. The next removal is reported again.
    void rearm();

  private:
    InputNodeRemovals(SdEventLoop& loop, int inotify, std::function<void()> removed);

    FileDescriptor inotify_;
    std::unique_ptr<SdEventLoop::Watch> watch_;  // uses the descriptor, so it is destroyed first
};

}  // namespace kovra
