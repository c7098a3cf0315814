#include "BLE_kovra/platform/linux/hid/UdevHIDManager.h"

#include <csignal>
#include <system_error>
#include <utility>

#include "BLE_kovra/platform/SystemLog.h"

namespace kovra {

namespace {

constexpr const char* pollingLine =
    "ble-kovra: udev недоступен, подключение и отключение устройств HID проверяется опросом раз в секунду";

// The parameter is a copy: the callback may replace the stored one, or destroy the manager.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void call(HIDManager::Callback callback, const UdevHIDDevice& device) {
    if (callback) callback(device);
}

}  // namespace

UdevHIDManager::UdevHIDManager(SdEventLoop& loop, SystemLog& log, UdevdPaths udevd,
                               std::vector<std::unique_ptr<HIDPresence>> presences, Listeners<>& missedEvents)
    : loop_(loop),
      log_(log),
      udevd_(std::move(udevd)),
      udev_(udev_new()),
      missedEvents_(missedEvents.add([this] { resynchronize(); })),
      announcer_(loop, udev_.get(), std::move(presences),
                 {.attached = [this](const UdevHIDDevice& device) { call(attached_, device); },
                  .removed = [this](const UdevHIDDevice& device) { call(removed_, device); },
                  .recheck = [this](const std::string& nodeName) { recheck(nodeName); }}) {}

void UdevHIDManager::open() {
    opened_ = true;
    checkAfterStop();
    watchInputNodes();
    // Listen before the first check, so that no node is missed. A node that is seen twice is announced once.
    if (!listen()) log_.log(pollingLine);
    resynchronize();
}

void UdevHIDManager::resynchronize() {
    if (!opened_) return;
    mustCheckAll_ = true;
    startWork();
}

bool UdevHIDManager::listen() {
    auto events = UdevEvents::open(udev_.get(), "hid", udevd_);
    if (!events) return false;
    try {
        watch_ = loop_.watch(events->descriptor(), [this] { eventsReadable(); });
    } catch (const std::system_error&) {
        return false;
    }
    events_ = std::move(events);
    return true;
}

void UdevHIDManager::checkAfterStop() {
    try {
        continued_ = loop_.onSignal(SIGCONT, [this] { resynchronize(); });
    } catch (const std::system_error&) {
        // No descriptors are left for the signal. If events are lost while the process is stopped, the socket of
        // udevd's events still reports that.
    }
}

void UdevHIDManager::watchInputNodes() {
    inputNodes_ = InputNodeRemovals::watch(loop_, udevd_.inputNodes, [this] { inputNodeRemoved(); });
}

// Delays the check. By then udevd has usually announced the removal, and the kernel has removed the device's other
// interfaces.
void UdevHIDManager::inputNodeRemoved() {
    loop_.asyncAfter(inputRemovalDelay, lifetime_.guard([this] {
        inputNodes_->rearm();  // before the check, so that no removal is missed in between
        resynchronize();
    }));
}

void UdevHIDManager::recheck(const std::string& nodeName) {
    if (!opened_) return;
    due_.push_back(nodeName);
    startWork();
}

void UdevHIDManager::startWork() {
    if (!std::exchange(isWorking_, true)) loop_.async(lifetime_.guard([this] { step(); }));
}

void UdevHIDManager::eventsReadable() {
    // When udevd starts, it causes events of the kernel. Nothing else has to report that it runs.
    if (events_->shouldReopen(udevd_) && listen()) mustCheckAll_ = true;
    if (!std::exchange(isWorking_, true)) step();
}

void UdevHIDManager::step() {
    if (const auto due = next()) {
        const Lifetime::Observer self = lifetime_.observe();
        announcer_.check(due->nodeName, due->ifMissing);
        if (!self.hasEnded()) loop_.async(lifetime_.guard([this] { step(); }));
        return;
    }
    isWorking_ = false;
    if (nextPoll_) nextPoll_->cancel();
    if (watch_) watch_->rearm();
    if (!watch_ || !isListComplete_) nextPoll_ = loop_.asyncAfter(pollInterval, lifetime_.guard([this] { poll(); }));
}

void UdevHIDManager::poll() {
    if (!events_) listen();
    resynchronize();
}

// Returns the next check. Events of udevd are handled before `due_`, so that their socket does not overflow.
std::optional<UdevHIDManager::Check> UdevHIDManager::next() {
    using Kind = UdevEvents::Event::Kind;
    using IfMissing = UdevHIDAnnouncer::IfMissing;
    while (events_) {
        UdevEvents::Event event = events_->next();
        if (event.kind == Kind::none) break;
        if (event.kind == Kind::lost) {
            mustCheckAll_ = true;
            continue;
        }
        return Check{std::move(event.nodeName), event.isRemoval ? IfMissing::announceRemoval : IfMissing::awaitRemoval};
    }
    if (std::exchange(mustCheckAll_, false)) {
        const auto allNodes = announcer_.allNodes();
        due_.assign(allNodes.names.begin(), allNodes.names.end());
        isListComplete_ = allNodes.isComplete;
    }
    if (due_.empty()) return std::nullopt;
    Check check{std::move(due_.front()), IfMissing::awaitRemoval};
    due_.pop_front();
    return check;
}

}  // namespace kovra
