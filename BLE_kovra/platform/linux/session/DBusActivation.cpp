#include "BLE_kovra/platform/linux/session/DBusActivation.h"

#include <cstdlib>
#include <string_view>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"

namespace kovra {

namespace {

constexpr const char* interface = "org.freedesktop.Application";

// The desktop gives a program that it starts one of these, and its name on the bus beside it. The better one first.
constexpr std::array<std::pair<const char*, const char*>, 2> tokens{
    {{"XDG_ACTIVATION_TOKEN", "activation-token"}, {"DESKTOP_STARTUP_ID", "desktop-startup-id"}}};

// Reads one entry of the platform data: a token into its place, and past everything else.
int readEntry(sd_bus_message* call, std::array<std::string, tokens.size()>& found) {
    const char* key = nullptr;
    int result = sd_bus_message_read(call, "s", &key);
    if (result < 0) return result;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (std::string_view(key) != tokens[i].second) continue;
        const char* token = nullptr;
        result = sd_bus_message_read(call, "v", "s", &token);
        if (result >= 0) found[i] = token;
        return result;
    }
    return sd_bus_message_skip(call, "v");
}

int readToken(sd_bus_message* call, std::string& token) {
    std::array<std::string, tokens.size()> found;
    int result = sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "{sv}");
    while (result >= 0 && (result = sd_bus_message_enter_container(call, SD_BUS_TYPE_DICT_ENTRY, "sv")) > 0) {
        result = readEntry(call, found);
        if (result >= 0) result = sd_bus_message_exit_container(call);
    }
    for (const std::string& each : found) {
        if (token.empty()) token = each;
    }
    return result;
}

}  // namespace

void DBusActivation::exportOn(sd_bus* bus) {
    if (slot_) return;
    sd_bus_slot* slot = nullptr;
    sd_bus_add_object_vtable(bus, &slot, path, interface, vtable.data(), this);
    slot_.reset(slot);
}

int DBusActivation::asked(sd_bus_message* call, void* context, sd_bus_error* error) {
    auto* self = static_cast<DBusActivation*>(context);
    if (self == nullptr) return 0;
    std::string token;
    if (readToken(call, token) < 0) return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "A token is a string.");
    self->queue_.async([weak = std::weak_ptr(self->activated_), token = std::move(token)] {
        if (const auto activated = weak.lock()) (*activated)(token);
    });
    return answer(call, [](BusWriter&) {});
}

void DBusActivation::activate(sd_bus* bus, const char* busName) {
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(bus, &made, busName, path, interface, "Activate") < 0) return;
    const BusMessage message(made);
    BusWriter writer(made);
    writer.openArray("{sv}");
    for (const auto& [variable, key] : tokens) {
        const char* token = std::getenv(variable);
        if (token == nullptr || *token == '\0') continue;
        writer.openEntry("sv").text(key).openVariant("s").text(token).close().close();
    }
    writer.close();
    if (writer.result() < 0) return;
    sd_bus_message_set_expect_reply(made, 0);
    sd_bus_message_set_auto_start(made, 0);
    if (sd_bus_send(bus, made, nullptr) >= 0) sd_bus_flush(bus);
}

std::string DBusActivation::takeOwnToken() {
    std::string own;
    for (const auto& [variable, key] : tokens) {
        const char* token = std::getenv(variable);
        if (token != nullptr && own.empty()) own = token;
        ::unsetenv(variable);
    }
    return own;
}

const std::array<sd_bus_vtable, 3> DBusActivation::vtable{{
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("Activate", SD_BUS_ARGS("a{sv}", platform_data), SD_BUS_NO_RESULT, asked,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
}};

}  // namespace kovra
