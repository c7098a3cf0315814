#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/HIDManager.h"
#include "BLE_kovra/platform/linux/hid/InputNodeRemovals.h"
#include "BLE_kovra/platform/linux/hid/UdevEvents.h"
#include "BLE_kovra/platform/linux/hid/UdevHIDAnnouncer.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

class SystemLog;

// The HID interfaces of a Linux machine, as the kernel lists them and udevd announces them. The manager decides when to
// check which node, and UdevHIDAnnouncer decides what to announce.
//
// It checks each node that udevd reports, or the kernel where udevd does not run, and each whose device may have
// disconnected or reconnected. It checks all nodes when it is opened, after events were lost, after the process was
// stopped and after the machine has slept.
//
// While udevd hangs, the kernel still removes the nodes of input devices from /dev/input. The manager checks all nodes
// after such a removal, too.
//
// Each queue block checks one node and then queues the next block. So the effects of one node are complete before the
// next node is checked, and the queue stays short. While no events can be received, all nodes are checked every
// `pollInterval`, and one line is logged. While events can be received, the process sleeps until the next one, unless
// the nodes could not be listed: then all nodes are checked again after `pollInterval`.
class UdevHIDManager : public HIDManager {
  public:
    static constexpr std::chrono::seconds pollInterval{1};
    // The time from the removal of an input device's node to the check of all nodes. The kernel needs less time to
    // remove all interfaces of a device. Together with UdevHIDAnnouncer::timeout it is short enough to announce a
    // removal within half a second.
    static constexpr std::chrono::milliseconds inputRemovalDelay{100};

    // `presences` are queried for each node that is checked; a device is absent if any of them reports it as absent.
    // When the listeners in `missedEvents` are called, all nodes are checked again.
    UdevHIDManager(SdEventLoop& loop, SystemLog& log, UdevdPaths udevd,
                   std::vector<std::unique_ptr<HIDPresence>> presences, Listeners<>& missedEvents);

    void registerMatchingCallback(Callback attached) override { attached_ = std::move(attached); }
    void registerRemovalCallback(Callback removed) override { removed_ = std::move(removed); }
    // Starts listening for events. The first check runs in the next turn of the queue.
    void open() override;

  private:
    struct Check {
        std::string nodeName;
        UdevHIDAnnouncer::IfMissing ifMissing;
    };

    void resynchronize();
    bool listen();
    void checkAfterStop();
    void watchInputNodes();
    void inputNodeRemoved();
    void recheck(const std::string& nodeName);
    void startWork();
    void eventsReadable();
    void step();
    void poll();
    std::optional<Check> next();

    SdEventLoop& loop_;
    SystemLog& log_;
    UdevdPaths udevd_;
    Udev udev_;
    Callback attached_;
    Callback removed_;
    Listeners<>::Token missedEvents_;
    UdevHIDAnnouncer announcer_;
    std::unique_ptr<UdevEvents> events_;         // null while polling
    std::unique_ptr<SdEventLoop::Watch> watch_;  // uses the descriptor, so it is destroyed first
    std::unique_ptr<SdEventLoop::Signal> continued_;
    std::unique_ptr<DelayedTask> nextPoll_;
    std::unique_ptr<InputNodeRemovals> inputNodes_;
    std::deque<std::string> due_;  // nodes still to be checked
    bool opened_ = false;
    bool mustCheckAll_ = false;
    bool isListComplete_ = true;  // the nodes could be listed the last time
    bool isWorking_ = false;      // a block that checks the next node is queued or running
    Lifetime lifetime_;
};

}  // namespace kovra
