#include "BLE_kovra/platform/linux/session/SingleInstance.h"

#include <chrono>
#include <cstdint>
#include <string_view>
#include <utility>

namespace kovra {

namespace {

using std::chrono::steady_clock;

constexpr auto timeout = std::chrono::seconds(2);

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

std::uint64_t microsecondsUntil(steady_clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(deadline - steady_clock::now()).count();
    return left > 0 ? static_cast<std::uint64_t>(left) : 0;
}

// Requests the name without running the event loop, which nothing else uses yet. Waits at most `timeout`, in case the
// bus hangs.
Answer requestName(sd_bus* bus) {
    Answer answer = Answer::none;
    sd_bus_slot* slot = nullptr;
    if (sd_bus_request_name_async(bus, &slot, SingleInstance::busName, 0, answered, &answer) < 0) return answer;
    const BusSlot request(slot);
    const auto deadline = steady_clock::now() + timeout;
    while (answer == Answer::none && steady_clock::now() < deadline) {
        const int processed = sd_bus_process(bus, nullptr);
        if (processed < 0) break;
        if (processed == 0) static_cast<void>(sd_bus_wait(bus, microsecondsUntil(deadline)));
    }
    return answer;
}

}  // namespace

SingleInstance::SingleInstance(SessionBus& bus, DBusActivation::Activated startedAgain)
    : activation_(bus.loop(), std::move(startedAgain)) {
    if (BusConnection* connection = bus.connection()) {
        activation_.exportOn(*connection);  // before the name is requested, so that its owner always has this object
        const Answer answer = requestName(bus.bus());
        isSecond_ = answer == Answer::second;
        isAnswered_ = answer != Answer::none;
        if (isSecond_) DBusActivation::activate(*connection, busName);
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
