#include "BLE_kovra/platform/linux/LogindSession.h"

#include <systemd/sd-login.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

namespace kovra {

namespace {

std::string taken(int result, char* text) {
    const Allocated<char> owned(text);
    return result >= 0 && owned ? owned.get() : "";
}

// Whether the properties that come next in the message say so.
bool tellsThatItIsActive(sd_bus_message* message) {
    if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}") < 0) return false;
    int isActive = 0;
    while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char* name = nullptr;
        if (sd_bus_message_read(message, "s", &name) < 0) return false;
        const int result = std::string_view(name) == "Active" ? sd_bus_message_read(message, "v", "b", &isActive)
                                                              : sd_bus_message_skip(message, "v");
        if (result < 0 || sd_bus_message_exit_container(message) < 0) return false;
    }
    return isActive != 0;
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

LogindSession::LogindSession(SdEventLoop& loop, std::string session) : loop_(loop), session_(std::move(session)) {
    sd_bus* opened = nullptr;
    if (sd_bus_open_system(&opened) < 0) return;
    connection_.emplace(loop, BusHandle(opened));
    listenTo("PrepareForSleep", prepareForSleep);
    if (session_.empty()) return;
    listenToSession();
    listenTo("SessionRemoved", sessionRemoved);
}

void LogindSession::listenTo(const char* signal, sd_bus_message_handler_t handler) {
    if (connection_->bus() == nullptr) return;
    // Without a slot of its own the match lives as long as the connection.
    sd_bus_match_signal_async(connection_->bus(), nullptr, "org.freedesktop.login1", "/org/freedesktop/login1",
                              "org.freedesktop.login1.Manager", signal, handler, nullptr, this);
}

void LogindSession::listenToSession() {
    char* encoded = nullptr;
    if (connection_->bus() == nullptr ||
        sd_bus_path_encode("/org/freedesktop/login1/session", session_.c_str(), &encoded) < 0) {
        return;
    }
    const Allocated<char> path(encoded);
    const std::string match =
        "type='signal',sender='org.freedesktop.login1',interface='org.freedesktop.DBus.Properties',"
        "member='PropertiesChanged',arg0='org.freedesktop.login1.Session',path='" +
        std::string(path.get()) + "'";
    sd_bus_add_match_async(connection_->bus(), nullptr, match.c_str(), sessionChanged, nullptr, this);
}

int LogindSession::sessionChanged(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<LogindSession*>(context);
    if (self == nullptr || sd_bus_message_skip(message, "s") < 0 || !tellsThatItIsActive(message)) return 0;
    if (self->onActivated) self->loop_.async(self->onActivated);
    return 0;
}

int LogindSession::sessionRemoved(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<LogindSession*>(context);
    const char* session = nullptr;
    if (self == nullptr || sd_bus_message_read(message, "s", &session) < 0) return 0;
    if (self->session_ == session && self->onRemoved) self->loop_.async(self->onRemoved);
    return 0;
}

int LogindSession::prepareForSleep(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<LogindSession*>(context);
    int goingToSleep = 1;
    if (self == nullptr || sd_bus_message_read(message, "b", &goingToSleep) < 0) return 0;
    if (goingToSleep == 0 && self->onResumed) self->loop_.async(self->onResumed);
    return 0;
}

}  // namespace kovra
