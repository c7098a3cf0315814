#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/hid/UdevEvents.h"
#include "BLE_kovra/platform/linux/hid/UdevHIDAnnouncer.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

class SystemLog;

// Decides when to look at which node: at each one that udevd tells of, or whose device may have come or gone without
// it; at all of them at the beginning, after events were lost, after the process was stopped and after the machine has
// slept.
//
// Each queue block looks at one node, and the next block is queued only then: whatever a device sets off is done
// before the next one, and a thousand devices never pile up. Where udevd cannot be heard, all nodes are looked at
// every `pollInterval`, after one line in the log, until it can. With udevd the process sleeps while nothing happens.
class UdevHIDWatcher : public std::enable_shared_from_this<UdevHIDWatcher> {
  public:
    static constexpr std::chrono::seconds pollInterval{1};

    // `presences` are asked about each node that is looked at; a device is away as soon as one says so.
    UdevHIDWatcher(SdEventLoop& loop, SystemLog& log, UdevSigns signs,
                   std::vector<std::unique_ptr<HIDPresence>> presences);
    ~UdevHIDWatcher();

    UdevHIDAnnouncer& announcer() { return *announcer_; }

    // Looks at nothing itself: that begins with the next turn of the queue.
    void open();
    // Does nothing before open().
    void resynchronize();

  private:
    struct Look {
        std::string nodeName;
        UdevHIDAnnouncer::IfGone ifGone;
    };

    bool listen();
    void wakeAfterStop();
    void begin();
    void rang();
    void step();
    void poll();
    void cancelPoll();
    std::optional<Look> next();

    SdEventLoop& loop_;
    SystemLog& log_;
    UdevSigns signs_;
    Udev udev_;
    std::shared_ptr<UdevHIDAnnouncer> announcer_;
    std::unique_ptr<UdevEvents> events_;         // null while polling
    std::unique_ptr<SdEventLoop::Watch> watch_;  // of the events' descriptor, so it goes first
    std::unique_ptr<SdEventLoop::Signal> continued_;
    std::unique_ptr<DelayedTask> nextPoll_;
    std::deque<std::string> due_;  // nodes still to be looked at
    bool opened_ = false;
    bool mustLookAtEverything_ = false;
    bool isWorking_ = false;  // a block that will look at the next node is queued, or running
};

}  // namespace kovra
