#include "BLE_kovra/platform/linux/LogindSession.h"

#include <systemd/sd-login.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <utility>

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

LogindSession::LogindSession(SdEventLoop& loop, std::string session) : loop_(loop), session_(std::move(session)) {
    sd_bus* opened = nullptr;
    if (sd_bus_open_system(&opened) < 0) return;
    connection_.emplace(loop, BusHandle(opened));
    listenTo("PrepareForSleep", prepareForSleep);
    if (!session_.empty()) listenTo("SessionRemoved", sessionRemoved);
}

void LogindSession::listenTo(const char* signal, sd_bus_message_handler_t handler) {
    if (connection_->bus() == nullptr) return;
    // Without a slot of its own the match lives as long as the connection.
    sd_bus_match_signal_async(connection_->bus(), nullptr, "org.freedesktop.login1", "/org/freedesktop/login1",
                              "org.freedesktop.login1.Manager", signal, handler, nullptr, this);
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
