#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/HIDManager.h"
#include "BLE_kovra/platform/linux/hid/UdevEvents.h"
#include "BLE_kovra/platform/linux/hid/UdevHIDAnnouncer.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

class SystemLog;

// The HID interfaces of a Linux machine, as the kernel shows them and udevd announces them. Decides when to look at
// which node, and leaves to UdevHIDAnnouncer what there is to announce of it: at each node that udevd reports, or whose
// device may have come or gone without it; at all of them at the beginning, after events were lost, after the process
// was stopped and after the machine has slept.
//
// Each queue block looks at one node, and the next block is queued only then: whatever a device sets off is done before
// the next one, and a thousand devices never pile up. Where udevd's events do not arrive, all nodes are looked at every
// `pollInterval`, after one line in the log, until they do. With udevd the process sleeps while nothing happens.
class UdevHIDManager : public HIDManager {
  public:
    static constexpr std::chrono::seconds pollInterval{1};

    // `presences` are asked about each node that is looked at; a device is away as soon as one says so. With each call
    // of `missedEvents` all nodes are looked at again.
    UdevHIDManager(SdEventLoop& loop, SystemLog& log, UdevSigns signs,
                   std::vector<std::unique_ptr<HIDPresence>> presences, Listeners<>& missedEvents);
    ~UdevHIDManager() override;

    void registerMatchingCallback(Callback attached) override { attached_ = std::move(attached); }
    void registerRemovalCallback(Callback removed) override { removed_ = std::move(removed); }
    // Looks at nothing itself: that begins with the next turn of the queue.
    void open() override;

  private:
    struct Look {
        std::string nodeName;
        UdevHIDAnnouncer::IfGone ifGone;
    };

    void resynchronize();
    bool listen();
    void wakeAfterStop();
    void lookAgain(const std::string& nodeName);
    void begin();
    void eventsReadable();
    void step();
    void poll();
    void cancelPoll();
    std::optional<Look> next();

    SdEventLoop& loop_;
    SystemLog& log_;
    UdevSigns signs_;
    Udev udev_;
    Callback attached_;
    Callback removed_;
    Listeners<>::Token missedEvents_;
    UdevHIDAnnouncer announcer_;
    std::unique_ptr<UdevEvents> events_;         // null while polling
    std::unique_ptr<SdEventLoop::Watch> watch_;  // of the events' descriptor, so it goes first
    std::unique_ptr<SdEventLoop::Signal> continued_;
    std::unique_ptr<DelayedTask> nextPoll_;
    std::deque<std::string> due_;  // nodes still to be looked at
    bool opened_ = false;
    bool mustLookAtEverything_ = false;
    bool isWorking_ = false;  // a block that will look at the next node is queued, or running
    Lifetime lifetime_;
};

}  // namespace kovra
