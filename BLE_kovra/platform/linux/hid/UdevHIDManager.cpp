#include "BLE_kovra/platform/linux/hid/UdevHIDManager.h"

#include <csignal>
#include <system_error>
#include <utility>

#include "BLE_kovra/platform/SystemLog.h"

namespace kovra {

namespace {

constexpr const char* pollingLine =
    "ble-kovra: udev недоступен, подключение и отключение устройств HID проверяется опросом раз в секунду";

// Called through a copy: the callback may replace the stored one, or destroy the manager.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void call(HIDManager::Callback callback, const UdevHIDDevice& device) {
    if (callback) callback(device);
}

}  // namespace

UdevHIDManager::UdevHIDManager(SdEventLoop& loop, SystemLog& log, UdevSigns signs,
                               std::vector<std::unique_ptr<HIDPresence>> presences, Listeners<>& missedEvents)
    : loop_(loop),
      log_(log),
      signs_(std::move(signs)),
      udev_(udev_new()),
      missedEvents_(missedEvents.add([this] { resynchronize(); })),
      announcer_(loop, udev_.get(), std::move(presences),
                 {.attached = [this](const UdevHIDDevice& device) { call(attached_, device); },
                  .removed = [this](const UdevHIDDevice& device) { call(removed_, device); },
                  .doubtful = [this](const std::string& nodeName) { lookAgain(nodeName); }}) {}

UdevHIDManager::~UdevHIDManager() { cancelPoll(); }

void UdevHIDManager::open() {
    opened_ = true;
    wakeAfterStop();
    // Events first, so that nothing is missed before the look; what is then seen twice is announced once.
    if (!listen()) log_.log(pollingLine);
    resynchronize();
}

void UdevHIDManager::resynchronize() {
    if (!opened_) return;
    mustLookAtEverything_ = true;
    begin();
}

bool UdevHIDManager::listen() {
    if (!signs_.areOfUdevd()) return false;
    auto events = UdevEvents::open(udev_.get(), "hid");
    if (!events) return false;
    try {
        watch_ = loop_.watch(events->descriptor(), [this] { eventsReadable(); });
    } catch (const std::system_error&) {
        return false;
    }
    events_ = std::move(events);
    return true;
}

void UdevHIDManager::wakeAfterStop() {
    try {
        continued_ = loop_.onSignal(SIGCONT, [this] { resynchronize(); });
    } catch (const std::system_error&) {
        // Events that are lost while the process is stopped are still noticed by the socket.
    }
}

void UdevHIDManager::lookAgain(const std::string& nodeName) {
    if (!opened_) return;
    due_.push_back(nodeName);
    begin();
}

void UdevHIDManager::begin() {
    if (!std::exchange(isWorking_, true)) loop_.async(lifetime_.guard([this] { step(); }));
}

void UdevHIDManager::eventsReadable() {
    if (!std::exchange(isWorking_, true)) step();
}

void UdevHIDManager::step() {
    if (const auto look = next()) {
        const Lifetime::Observer self = lifetime_.observe();
        announcer_.look(look->nodeName, look->ifGone);
        if (!self.hasEnded()) loop_.async(lifetime_.guard([this] { step(); }));
        return;
    }
    isWorking_ = false;
    cancelPoll();
    if (watch_)
        watch_->rearm();
    else
        nextPoll_ = loop_.asyncAfter(pollInterval, lifetime_.guard([this] { poll(); }));
}

void UdevHIDManager::cancelPoll() {
    if (nextPoll_) nextPoll_->cancel();
    nextPoll_ = nullptr;
}

void UdevHIDManager::poll() {
    if (!events_) listen();
    resynchronize();
}

// Events first, so that the socket is emptied soon.
std::optional<UdevHIDManager::Look> UdevHIDManager::next() {
    using Kind = UdevEvents::Event::Kind;
    using IfGone = UdevHIDAnnouncer::IfGone;
    while (events_) {
        UdevEvents::Event event = events_->next();
        if (event.kind == Kind::none) break;
        if (event.kind == Kind::lost) {
            mustLookAtEverything_ = true;
            continue;
        }
        return Look{std::move(event.nodeName), event.isRemoval ? IfGone::announceRemoval : IfGone::awaitRemoval};
    }
    if (std::exchange(mustLookAtEverything_, false)) {
        const auto everything = announcer_.everything();
        due_.assign(everything.begin(), everything.end());
    }
    if (due_.empty()) return std::nullopt;
    Look look{std::move(due_.front()), IfGone::awaitRemoval};
    due_.pop_front();
    return look;
}

}  // namespace kovra
