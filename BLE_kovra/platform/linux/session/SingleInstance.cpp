#include "BLE_kovra/platform/linux/session/SingleInstance.h"

#include <poll.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

#include "BLE_kovra/platform/SystemLog.h"
#include "BLE_kovra/platform/linux/session/BusWait.h"
#include "BLE_kovra/platform/linux/session/InstanceLock.h"

namespace kovra {

namespace {

using Owner = DBusActivation::Owner;

constexpr auto timeout = std::chrono::seconds(2);
constexpr auto endOfAProcess = std::chrono::seconds(1);
constexpr const char* nameIsTaken =
    "имя org.ble_kovra.BLEKovra на сессионной шине занято другой программой, работа продолжается без него";
constexpr const char* firstIsOutOfReach =
    "ble-kovra: программа уже запущена этим пользователем, но на сессионной шине не отвечает";

enum class Answer { none, first, second };

int answered(sd_bus_message* reply, void* context, sd_bus_error*) {
    auto& answer = *static_cast<Answer*>(context);
    answer = Answer::first;
    std::uint32_t code = 0;
    constexpr std::uint32_t nameExists = 3;  // DBUS_REQUEST_NAME_REPLY_EXISTS
    if (!sd_bus_message_is_method_error(reply, nullptr) && sd_bus_message_read(reply, "u", &code) >= 0 &&
        code == nameExists) {
        answer = Answer::second;
    }
    return 0;
}

// Requests the name without running the event loop, which nothing else uses yet. Waits at most `timeout`, in case the
// bus hangs.
Answer requestName(sd_bus* bus) {
    Answer answer = Answer::none;
    sd_bus_slot* slot = nullptr;
    if (sd_bus_request_name_async(bus, &slot, SingleInstance::busName, 0, answered, &answer) < 0) return answer;
    const BusSlot request(slot);
    processUntil(bus, timeout, [&] { return answer != Answer::none; });
    return answer;
}

// Returns whether another process keeps the lock. A process that was killed keeps it until the kernel has ended that
// process, which takes a moment if memory has run out.
bool isStillHeldElsewhere(const InstanceLock& lock) {
    constexpr int pauseMilliseconds = 20;
    for (const auto end = std::chrono::steady_clock::now() + endOfAProcess;
         lock.state() == InstanceLock::State::heldElsewhere; ::poll(nullptr, 0, pauseMilliseconds)) {
        if (std::chrono::steady_clock::now() >= end) return true;
    }
    return false;
}

// Shows a text on the desktop if a notification service is running. Does not wait for a reply.
void notify(BusConnection& bus, const char* text) {
    bus.send(
        {"org.freedesktop.Notifications", "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "Notify"},
        [text](BusWriter& message) {
            constexpr const char* name = "BLE-kovra";
            constexpr std::int32_t asTheDesktopDecides = -1;
            message.text(name).natural(0).text("").text(name).text(text);
            message.openArray("s").close().openArray("{sv}").close().integer(asTheDesktopDecides);
        });
}

}  // namespace

SingleInstance::SingleInstance(SessionBus& bus, const InstanceLock& lock, SystemLog& log,
                               DBusActivation::Activated startedAgain, DBusActivation::Requested requested)
    : isSecond_(lock.state() == InstanceLock::State::heldElsewhere),
      activation_(bus.loop(), std::move(startedAgain), std::move(requested)) {
    BusConnection* connection = bus.connection();
    if (isSecond_) {
        const Owner owner =
            connection == nullptr ? Owner::foreign : DBusActivation::activate(connection->bus(), busName);
        if (owner == Owner::ours) return;
        isSecond_ = owner == Owner::silent || isStillHeldElsewhere(lock);
        if (isSecond_) {
            log.log(firstIsOutOfReach);
            return;
        }
    }
    if (connection != nullptr) takeName(*connection, lock, log);
    if (!isSecond_) listening_ = bus.listen([this](BusConnection* changed) { busChanged(changed); });
}

void SingleInstance::takeName(BusConnection& connection, const InstanceLock& lock, SystemLog& log) {
    activation_.exportOn(connection);  // before the name is requested, so that its owner always has this object
    const Answer answer = requestName(connection.bus());
    isAnswered_ = answer != Answer::none;
    if (answer != Answer::second) return;
    const Owner owner = DBusActivation::activate(connection.bus(), busName);
    // A silent owner may be a stopped instance of this program, but only if there is no lock: otherwise that instance
    // would hold the lock.
    const bool mayBeSilent = lock.state() == InstanceLock::State::none;
    isSecond_ = owner == Owner::ours || (owner == Owner::silent && mayBeSilent);
    if (isSecond_) return;
    log.log(std::string("ble-kovra: ") + nameIsTaken);
    notify(connection, nameIsTaken);
}

void SingleInstance::busChanged(BusConnection* bus) {
    if (bus == nullptr) {
        activation_.detach();
        isAnswered_ = false;
        return;
    }
    activation_.exportOn(*bus);
    if (!isAnswered_) bus->requestName(busName);
}

}  // namespace kovra
