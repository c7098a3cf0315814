#include "BLE_kovra/platform/linux/session/SingleInstance.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

#include "BLE_kovra/platform/SystemLog.h"
#include "BLE_kovra/platform/linux/session/BusWait.h"

namespace kovra {

namespace {

constexpr auto timeout = std::chrono::seconds(2);
constexpr const char* nameIsTaken =
    "имя org.ble_kovra.BLEKovra на сессионной шине занято другой программой, работа продолжается без него";

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

// Shows a text on the desktop if a service for that is running. Does not wait for a reply.
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

SingleInstance::SingleInstance(SessionBus& bus, SystemLog& log, DBusActivation::Activated startedAgain)
    : activation_(bus.loop(), std::move(startedAgain)) {
    if (BusConnection* connection = bus.connection()) {
        activation_.exportOn(*connection);  // before the name is requested, so that its owner always has this object
        const Answer answer = requestName(bus.bus());
        isAnswered_ = answer != Answer::none;
        if (answer == Answer::second) {
            isSecond_ = DBusActivation::activate(bus.bus(), busName) != DBusActivation::Owner::foreign;
            if (!isSecond_) {
                log.log(std::string("ble-kovra: ") + nameIsTaken);
                notify(*connection, nameIsTaken);
            }
        }
    }
    if (isSecond_) return;
    listening_ = bus.listen([this](BusConnection* connection) { busChanged(connection); });
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
