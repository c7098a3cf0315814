#include "BLE_kovra/platform/linux/session/LogindSession.h"

#include <systemd/sd-login.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <utility>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"

namespace kovra {

namespace {

std::string taken(int result, char* text) {
    const Allocated<char> owned(text);
    return result >= 0 && owned ? owned.get() : "";
}

}  // namespace

std::string LogindSession::currentSession() {
    char* text = nullptr;
    int result = sd_pid_get_session(0, &text);
    std::string session = taken(result, text);
    // A program that the user's service manager started belongs to no session.
    if (const char* named = std::getenv("XDG_SESSION_ID"); session.empty() && named != nullptr) session = named;
    if (!session.empty()) return session;
    text = nullptr;
    result = sd_uid_get_display(::getuid(), &text);
    return taken(result, text);
}

LogindSession::LogindSession(SystemBus& bus, std::string session) : bus_(bus), session_(std::move(session)) {
    const std::string ofManager = "interface='org.freedesktop.login1.Manager',path='/org/freedesktop/login1',member=";
    listen(ofManager + "'PrepareForSleep'", prepareForSleep);
    char* encoded = nullptr;
    if (session_.empty() || sd_bus_path_encode("/org/freedesktop/login1/session", session_.c_str(), &encoded) < 0)
        return;
    const Allocated<char> path(encoded);
    listen(
        "interface='org.freedesktop.DBus.Properties',member='PropertiesChanged',"
        "arg0='org.freedesktop.login1.Session',path='" +
            std::string(encoded) + "'",
        sessionChanged);
    listen(ofManager + "'SessionRemoved'", sessionRemoved);
}

void LogindSession::listen(const std::string& match, sd_bus_message_handler_t handler) {
    if (bus_.bus() == nullptr) return;
    const std::string whole = "type='signal',sender='org.freedesktop.login1'," + match;
    sd_bus_slot* slot = nullptr;
    sd_bus_add_match_async(bus_.bus(), &slot, whole.c_str(), handler, nullptr, this);
    slots_.emplace_back(slot);
}

int LogindSession::sessionChanged(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<LogindSession*>(context);
    if (self == nullptr || sd_bus_message_skip(message, "s") < 0) return 0;
    if (readBooleanProperty(message, "Active") == true && self->onActivated) self->bus_.loop().async(self->onActivated);
    return 0;
}

int LogindSession::sessionRemoved(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<LogindSession*>(context);
    const char* session = nullptr;
    if (self == nullptr || sd_bus_message_read(message, "s", &session) < 0) return 0;
    if (self->session_ == session && self->onRemoved) self->bus_.loop().async(self->onRemoved);
    return 0;
}

int LogindSession::prepareForSleep(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<LogindSession*>(context);
    int goingToSleep = 1;
    if (self == nullptr || sd_bus_message_read(message, "b", &goingToSleep) < 0) return 0;
    if (goingToSleep == 0 && self->onResumed) self->bus_.loop().async(self->onResumed);
    return 0;
}

}  // namespace kovra
