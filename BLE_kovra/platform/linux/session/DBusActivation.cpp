#include "BLE_kovra/platform/linux/session/DBusActivation.h"

#include <cstdlib>
#include <string_view>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"

namespace kovra {

namespace {

constexpr const char* interface = "org.freedesktop.Application";

// The variables in which a desktop passes a token to a program that it starts, in order of preference. Each is followed
// by the token's key on the bus.
constexpr std::array<std::pair<const char*, const char*>, 2> tokens{
    {{"XDG_ACTIVATION_TOKEN", "activation-token"}, {"DESKTOP_STARTUP_ID", "desktop-startup-id"}}};

// Reads the next value of the message, the platform data, and stores the preferred token in it. Returns a negative
// error number if the message has another signature.
int readToken(sd_bus_message* call, std::string& token) {
    std::array<std::string, tokens.size()> found;
    const int result = forEachEntry(call, "{sv}", [&](std::string_view key) {
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            if (key != tokens[i].second) continue;
            const char* value = nullptr;
            const int read = sd_bus_message_read(call, "v", "s", &value);
            if (read > 0) found[i] = value;
            return read;
        }
        return 0;
    });
    token = found[0].empty() ? found[1] : found[0];
    return result;
}

}  // namespace

void DBusActivation::exportOn(BusConnection& bus) {
    if (!slot_) slot_ = bus.exportObject(path, interface, vtable.data(), this);
}

int DBusActivation::received(sd_bus_message* call, void* context, sd_bus_error* error) {
    auto* self = static_cast<DBusActivation*>(context);
    if (self == nullptr) return 0;
    std::string token;
    if (readToken(call, token) < 0) return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "A token is a string.");
    self->queue_.async(self->lifetime_.guard([self, token = std::move(token)] { self->activated_(token); }));
    return answer(call, [](BusWriter&) {});
}

void DBusActivation::activate(BusConnection& bus, const char* busName) {
    bus.send({busName, path, interface, "Activate"}, [](BusWriter& message) {
        message.openArray("{sv}");
        for (const auto& [variable, key] : tokens) {
            const char* token = std::getenv(variable);
            if (token != nullptr && *token != '\0') message.entry(key, token);
        }
        message.close();
    });
    sd_bus_flush(bus.bus());
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
    SD_BUS_METHOD_WITH_ARGS("Activate", SD_BUS_ARGS("a{sv}", platform_data), SD_BUS_NO_RESULT, received,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
}};

}  // namespace kovra
