#include "BLE_kovra/platform/linux/control/Question.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <utility>

#include "BLE_kovra/platform/linux/session/BusWait.h"

namespace kovra::control {

namespace {

constexpr std::chrono::seconds timeout{2};

int received(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* answer = static_cast<std::optional<BusMessage>*>(context);
    if (answer == nullptr) return 0;
    answer->emplace(sd_bus_message_ref(message));
    return 0;
}

}  // namespace

int openUserBus(BusHandle& bus) {
    sd_bus* made = nullptr;
    int result = sd_bus_open_user(&made);
    // Over ssh, or in a job of cron, the variables may be missing although the user's bus is there.
    if (result == -ENOMEDIUM && (result = sd_bus_new(&made)) >= 0) {
        const std::string address = "unix:path=/run/user/" + std::to_string(::geteuid()) + "/bus";
        result = sd_bus_set_address(made, address.c_str());
        if (result >= 0) result = sd_bus_set_bus_client(made, 1);
        if (result >= 0) result = sd_bus_start(made);
    }
    bus.reset(made);
    if (result < 0) bus.reset();
    return result < 0 ? result : 0;
}

int openSystemBus(BusHandle& bus) {
    sd_bus* made = nullptr;
    const int result = sd_bus_open_system(&made);
    bus.reset(made);
    return result < 0 ? result : 0;
}

BusReply ask(sd_bus* bus, const char* destination, const char* path, const char* interface, const char* member,
             const std::function<void(BusWriter&)>& write) {
    sd_bus_message* made = nullptr;
    int result = sd_bus_message_new_method_call(bus, &made, destination, path, interface, member);
    const BusMessage message(made);
    if (result >= 0) result = sd_bus_message_set_auto_start(made, 0);
    BusWriter writer(made);
    if (result >= 0) write(writer);
    if (result >= 0) result = writer.result();
    std::optional<BusMessage> answer;
    sd_bus_slot* slot = nullptr;
    if (result >= 0) result = sd_bus_call_async(bus, &slot, made, received, &answer, 0);
    const BusSlot pending(slot);
    if (result >= 0) processUntil(bus, timeout, [&] { return answer.has_value(); });
    // sd-bus itself generates the error NoReply when the connection ends.
    if (!answer || sd_bus_message_is_method_error(answer->get(), SD_BUS_ERROR_NO_REPLY) > 0) return {};
    const sd_bus_error* error = sd_bus_message_get_error(answer->get());
    if (error == nullptr) return {BusReply::Kind::answered, "", "", std::move(*answer)};
    return {BusReply::Kind::refused, error->name, error->message == nullptr ? "" : error->message, nullptr};
}

BusReply askForProperties(sd_bus* bus, const char* destination, const char* path, const char* interface) {
    return ask(bus, destination, path, "org.freedesktop.DBus.Properties", "GetAll",
               [interface](BusWriter& writer) { writer.text(interface); });
}

}  // namespace kovra::control
