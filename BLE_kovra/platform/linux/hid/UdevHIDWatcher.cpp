#include "BLE_kovra/platform/linux/hid/UdevHIDWatcher.h"

#include <csignal>
#include <system_error>
#include <utility>

#include "BLE_kovra/platform/SystemLog.h"

namespace kovra {

namespace {

constexpr const char* pollingLine =
    "ble-kovra: udev недоступен, подключение и отключение устройств HID проверяется опросом раз в секунду";

// A block for the queue that does nothing once the watcher is gone.
auto weakly(const std::shared_ptr<UdevHIDWatcher>& watcher, auto action) {
    return [weak = std::weak_ptr(watcher), action] {
        if (const auto strong = weak.lock()) action(*strong);
    };
}

}  // namespace

UdevHIDWatcher::UdevHIDWatcher(SdEventLoop& loop, SystemLog& log, UdevSigns signs,
                               std::vector<std::unique_ptr<HIDPresence>> presences)
    : loop_(loop),
      log_(log),
      signs_(std::move(signs)),
      udev_(udev_new()),
      announcer_(std::make_shared<UdevHIDAnnouncer>(loop, udev_.get(), std::move(presences))) {}

UdevHIDWatcher::~UdevHIDWatcher() { cancelPoll(); }

void UdevHIDWatcher::open() {
    opened_ = true;
    wakeAfterStop();
    announcer_->onDoubt = [weak = weak_from_this()](const std::string& nodeName) {
        const auto self = weak.lock();
        if (!self) return;
        self->due_.push_back(nodeName);
        self->begin();
    };
    // Listening comes before looking, so that nothing is missed in between; what is then seen twice is announced once.
    if (!listen()) log_.log(pollingLine);
    resynchronize();
}

void UdevHIDWatcher::resynchronize() {
    if (!opened_) return;
    mustLookAtEverything_ = true;
    begin();
}

bool UdevHIDWatcher::listen() {
    if (!signs_.areOfUdevd()) return false;
    auto events = UdevEvents::open(udev_.get(), "hid");
    if (!events) return false;
    try {
        watch_ = loop_.watch(events->descriptor(), weakly(shared_from_this(), [](auto& self) { self.rang(); }));
    } catch (const std::system_error&) {
        return false;
    }
    events_ = std::move(events);
    return true;
}

void UdevHIDWatcher::wakeAfterStop() {
    try {
        continued_ = loop_.onSignal(SIGCONT, weakly(shared_from_this(), [](auto& self) { self.resynchronize(); }));
    } catch (const std::system_error&) {
        // Events that are lost while the process is stopped are still noticed by the socket.
    }
}

void UdevHIDWatcher::begin() {
    if (std::exchange(isWorking_, true)) return;
    loop_.async(weakly(shared_from_this(), [](auto& self) { self.step(); }));
}

void UdevHIDWatcher::rang() {
    if (!std::exchange(isWorking_, true)) step();
}

void UdevHIDWatcher::step() {
    if (const auto look = next()) {
        announcer_->look(look->nodeName, look->ifGone);
        loop_.async(weakly(shared_from_this(), [](auto& self) { self.step(); }));
        return;
    }
    isWorking_ = false;
    cancelPoll();
    if (watch_)
        watch_->rearm();
    else
        nextPoll_ = loop_.asyncAfter(pollInterval, weakly(shared_from_this(), [](auto& self) { self.poll(); }));
}

void UdevHIDWatcher::cancelPoll() {
    if (nextPoll_) nextPoll_->cancel();
    nextPoll_ = nullptr;
}

void UdevHIDWatcher::poll() {
    if (!events_) listen();
    resynchronize();
}

// Events first, so that the socket is emptied soon.
std::optional<UdevHIDWatcher::Look> UdevHIDWatcher::next() {
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
        const auto everything = announcer_->everything();
        due_.assign(everything.begin(), everything.end());
    }
    if (due_.empty()) return std::nullopt;
    Look look{std::move(due_.front()), IfGone::awaitRemoval};
    due_.pop_front();
    return look;
}

}  // namespace kovra
