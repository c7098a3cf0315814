#pragma once

#include <memory>

#include "BLE_kovra/platform/HIDManager.h"
#include "BLE_kovra/platform/linux/hid/UdevHIDWatcher.h"

namespace kovra {

// The HID interfaces of a Linux machine, as the kernel shows them and udevd announces them. Beneath it, UdevHIDWatcher
// decides when a node is looked at, UdevHIDAnnouncer what there is to tell of it.
class UdevHIDManager : public HIDManager {
  public:
    explicit UdevHIDManager(std::shared_ptr<UdevHIDWatcher> watcher) : watcher_(std::move(watcher)) {}
    ~UdevHIDManager() override { watcher_->announcer().silence(); }

    void registerMatchingCallback(Callback attached) override { watcher_->announcer().attached = std::move(attached); }
    void registerRemovalCallback(Callback removed) override { watcher_->announcer().removed = std::move(removed); }
    void open() override { watcher_->open(); }

  private:
    std::shared_ptr<UdevHIDWatcher> watcher_;  // may outlive the manager for the rest of the block that destroys it
};

}  // namespace kovra
